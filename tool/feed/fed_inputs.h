// ffmpeg's inputs when `tool` delivers pictures and sound.
#pragma once

#include "tool/capture/capture.h"
#include "tool/screen/rectangle.h"

#include <optional>
#include <string>

namespace tool {

// The number of meaningless bytes at the start of the picture pipe. When they are read, ffmpeg has
// opened the pipe.
constexpr int skippedBytes = 64;

// What is delivered.
struct FeedPlan
{
    std::string display;          // as in DISPLAY
    Rectangle area;               // even width and height
    std::optional<int> soundPipe; // file descriptor with s16le stereo; none: no sound
    // File descriptor with `skippedBytes`, then yuv420p frames; none: ffmpeg grabs the screen
    // itself.
    std::optional<int> screenPipe = std::nullopt;
};

// The screen before the sound.
CaptureInputs FedInputs(const Record& record, const FeedPlan& plan);

} // namespace tool
