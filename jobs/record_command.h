#pragma once

#include <QDateTime>
#include <QString>

// The command line and file name of a recording.

struct RecordDevices
{
    char screen = '0';
    int microphone = -1;
    int sound = -1;
};

/// Formats a date and time for a file name.
QString FileStamp(const QDateTime& time);

/// The path of a recording started at `time`, in `directory`.
QString RecordPath(const QString& directory, const QDateTime& time);

/// A path for a new file, as a command names it (CommandPath): `path` itself, or a numbered one
/// beside it where something of that name exists, be it a link that leads nowhere. A numbered one
/// has at most 519 characters; empty when a free name does not fit.
QString FreePath(const QString& path);

/// The command line of a recording. `audio` is the item data of the audio choice: -1 for both
/// devices, 0 or more for one device's index, less than -1 for no sound. Ends with a blank.
QString RecordCommand(const QString& tool, const RecordDevices& devices, int audio,
                      const QString& path);
