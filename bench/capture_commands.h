// ffmpeg's command line of a recording, and others for the same work without `tool`.
#pragma once

#include <QStringList>

// The command line of the process that encodes the recording, or an empty list if there is none.
QStringList EncoderOf(const QList<qint64>& processes);

// ffmpeg grabs the screen and reads the sound itself.
QStringList StockCommand(QStringList command, const QString& destination);

// ffmpeg encodes pictures and sound of the recording's format from files.
QStringList EncodingCommand(QStringList command, const QString& pictures, const QString& sound,
                            const QString& destination);

// The sample rate of the recording's sound, as a word.
QString SampleRate(const QStringList& command);

// The size of a frame in bytes, and the frames a second.
qint64 FrameBytes(const QStringList& command);
double FrameRate(const QStringList& command);
