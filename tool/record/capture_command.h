// The ffmpeg command of a recording.
#pragma once

#include "tool/capture/capture.h"
#include "tool/command/command.h"
#include "tool/ffmpeg/features.h"

#include <optional>
#include <string>

namespace tool {

// The inputs of a recording, and its file.
struct CapturePlan
{
    CaptureInputs capture;
    FfmpegFeatures features;
    // A name of the empty file to write; none: ffmpeg makes the file.
    std::optional<std::string> file = std::nullopt;
};

// The arguments for the stock ffmpeg, with the pictures before the sound.
Arguments CaptureCommand(const Record& record, const CapturePlan& plan);

} // namespace tool
