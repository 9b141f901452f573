// What the encoding of a recording costs without the recording.
#pragma once

#include <QStringList>

#include <optional>

// Processor seconds that ffmpeg takes for a second of the recording, once it has started.
struct EncodingCost
{
    double fromFiles = 0; // as fast as it can
    double fedLive = 0;   // through pipes at the pace of a recording, as `tool` feeds it
};

// Decodes the beginning of the recording into `folder` and encodes it from there with the
// recording's command. Returns nothing if ffmpeg fails.
std::optional<EncodingCost> CostOfEncoding(const QStringList& command, const QString& recording,
                                           const QString& folder);
