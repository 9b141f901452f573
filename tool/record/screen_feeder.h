// The process that supplies ffmpeg with frames. It grabs the screen, converts the pixel format,
// which takes ffmpeg several times as long, and keeps the frame rate.
#pragma once

#include "tool/record/picture_clock.h"
#include "tool/record/recording_time.h"
#include "tool/screen/rectangle.h"

#include <optional>

namespace tool {

struct ScreenFeederPlan
{
    Rectangle area; // even width and height
    PictureRate rate;
    RecordingTime* start = nullptr; // set at the first frame
};

// Starts it as a child of this process, which then becomes ffmpeg. Returns the descriptor for
// ffmpeg to read from (it survives the exec): `skippedBytes` meaningless bytes, then yuv420p
// frames. Returns nothing if the screen cannot be grabbed this way. The child exits when the pipe
// is closed, and at the latest with this process. When the screen disappears, the pipe ends.
std::optional<int> StartScreenFeeder(const ScreenFeederPlan& plan);

} // namespace tool
