// The process that hands ffmpeg its pictures: it grabs the screen, changes the colours, which
// ffmpeg takes several times as long for, and keeps the rate.
#pragma once

#include "tool/arguments.h"
#include "tool/picture_clock.h"
#include "tool/recording_start.h"

#include <optional>
#include <string>

namespace tool {

struct ScreenFeederPlan
{
    std::string display;
    Rectangle area; // even width and height
    PictureRate rate;
    RecordingStart* start = nullptr; // set with the first picture
};

// Starts it as a child of this process, which is to become ffmpeg. Returns the descriptor ffmpeg
// shall read from (it survives the exec): `skippedBytes` that mean nothing, then yuv420p pictures.
// Nothing when the screen cannot be grabbed this way. The child ends when nobody reads any more,
// and at the latest with this process; when the screen is gone, what can be read ends.
std::optional<int> StartScreenFeeder(const ScreenFeederPlan& plan);

} // namespace tool
