// The devices that ffmpeg can capture from on this Mac.
#pragma once

#include "tool/avfoundation/device_text.h"

#include <string>
#include <vector>

namespace tool {

struct FoundAvDevices
{
    AvDevices devices;
    size_t firstScreen = 0; // the screens are the video devices from this one on
    std::string noneReason; // a sentence without its full stop, if there is no screen
    size_t Screens() const { return devices.video.size() - firstScreen; }
};

// Asks ffmpeg, for 10 s at most. `ffmpeg`: its path, or empty.
FoundAvDevices FindAvDevices(const std::string& ffmpeg);

} // namespace tool
