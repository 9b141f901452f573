// What is in a recording.
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

struct RecordingFile
{
    QString fault;             // why it does not play from the start to the end; empty when it does
    QStringList pictureTracks; // codec, pixel format, size: "h264 yuv420p 1280x800"
    QStringList soundTracks;   // codec: "aac"
    double seconds = 0;
};

// Decodes all of it.
RecordingFile ReadRecording(const QString& file);

// What recording_report tells of a recording that shows the test pattern in the upper left corner,
// or where the options say. A long recording takes its time.
QMap<QString, QString> PatternReport(const QString& file, int milliseconds = 60000,
                                     const QStringList& options = {});
