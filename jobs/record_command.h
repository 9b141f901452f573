#pragma once

#include <QDateTime>
#include <QString>

// The command line of a recording and the name of its file.

struct RecordDevices
{
    char screen = '0';
    int microphone = -1;
    int sound = -1;
};

/// The text of a date and time in the names of the files that the program makes.
QString FileStamp(const QDateTime& time);

/// Where a recording started at `time` goes: in `directory`, named by the time.
QString RecordPath(const QString& directory, const QDateTime& time);

/// A path for a new file: `path` itself, or a numbered one beside it where a file of that name
/// exists. At most 519 characters; empty when a free name does not fit.
QString FreePath(const QString& path);

/// The whole command line. `audio` is the item data of the audio choice: -1 both devices, 0 and
/// above one device's index, below -1 no sound. It ends in a blank.
QString RecordCommand(const QString& tool, const RecordDevices& devices, int audio,
                      const QString& path);
