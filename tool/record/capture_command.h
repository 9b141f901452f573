// The ffmpeg command of a recording.
#pragma once

#include "tool/command/command.h"
#include "tool/screen/rectangle.h"

#include <optional>
#include <string>

namespace tool {

// The number of meaningless bytes at the start of the picture pipe. When they are read, ffmpeg has
// opened the pipe.
constexpr int skippedBytes = 64;

// The inputs of a recording, and its file.
struct CapturePlan
{
    std::string display;           // as in DISPLAY
    Rectangle area;                // even width and height
    std::optional<int> soundPipe;  // file descriptor with s16le stereo; none: no sound
    bool knowsStatsPeriod = false; // whether this ffmpeg has -stats_period
    // File descriptor with `skippedBytes`, then yuv420p frames; none: ffmpeg grabs the screen
    // itself.
    std::optional<int> screenPipe = std::nullopt;
    // A name of the empty file to write; none: ffmpeg makes the file.
    std::optional<std::string> file = std::nullopt;
};

// The arguments for the stock ffmpeg, with the screen before the sound.
Arguments CaptureCommand(const Record& record, const CapturePlan& plan);

} // namespace tool
