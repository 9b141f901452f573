// The list of devices that ffmpeg prints on macOS.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// A device of the list. Its number there is its place in the vector.
struct AvDevice
{
    std::string name; // in the user's language, or given by the user
    std::string uid;  // empty: this ffmpeg does not tell
    bool operator==(const AvDevice&) const = default;
};

struct AvDevices
{
    std::vector<AvDevice> video; // cameras, then screens
    std::vector<AvDevice> sound;
    bool isListed = false; // the text has the header of a list
};

// Reads the lines of a list, such as "[AVFoundation indev @ 0x7f] [1] Capture screen 0", in the
// forms of all versions. Other lines, also those in between, do not matter.
AvDevices ParseDeviceText(std::string_view text);

// The place of the first screen among the video devices. Screens are the last devices, and numbered
// from 0; a camera is no screen, even if it is called like one.
size_t FirstScreen(const std::vector<AvDevice>& video);

} // namespace tool
