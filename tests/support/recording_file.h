// Inspects a recording.
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

struct RecordingFile
{
    QString fault;             // why it does not play completely; empty if it does
    QStringList pictureTracks; // codec, pixel format, size: "h264 yuv420p 1280x800"
    QStringList soundTracks;   // codec: "aac"
    double seconds = 0;
};

// Decodes the whole file.
RecordingFile ReadRecording(const QString& file);

// How much is in the file by now, also while it is being recorded; 0 if nothing.
double SecondsIn(const QString& file);

// Runs recording_report on a recording with the test pattern in the upper left corner, or where the
// options say. Takes a while for a long recording.
QMap<QString, QString> PatternReport(const QString& file, int milliseconds = 60000,
                                     const QStringList& options = {});

// The numbers in a line of it, separated by blanks.
QList<double> Numbers(const QString& list);

// Beep minus flash in ms for each flash between the two times that has a beep. `report`: of
// PatternReport().
QList<double> SoundOffsets(const QMap<QString, QString>& report, double from, double to);
