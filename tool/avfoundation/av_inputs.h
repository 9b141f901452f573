// ffmpeg's inputs when it captures from a Mac's screen and sound devices.
#pragma once

#include "tool/capture/capture.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tool {

// The devices' numbers in ffmpeg's own list.
struct AvPlan
{
    size_t screen = 0;
    std::vector<size_t> sounds;
    bool knowsInputSync = false; // whether this ffmpeg has -isync for an input
};

// The name of a sound device as an input: ":1".
std::string AvSoundName(size_t sound);

// The screen with the first sound, and an input for each further sound: the screen is captured
// once.
CaptureInputs AvInputs(const Record& record, const AvPlan& plan);

} // namespace tool
