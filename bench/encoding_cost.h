// What the encoding of a recording costs without the recording.
#pragma once

#include <QStringList>

// Decodes the beginning of the recording into `folder` and encodes it from there with the
// recording's command. Returns the processor seconds that a second of it takes once ffmpeg has
// started, or -1 if ffmpeg fails.
double EncodingCost(const QStringList& command, const QString& recording, const QString& folder);
