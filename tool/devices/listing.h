// The printed list of capture devices.
#pragma once

#include "tool/sound/sound_server.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// A device in the list: its printed title, and the name of its source or `computerSounds`.
struct SoundDevice
{
    std::string title;
    std::string source;
    bool operator==(const SoundDevice&) const = default;
};

// Orders the devices: the default microphone, other microphones, the monitor of the default output.
// The recorder takes the last device for the computer sounds and looks for "Microphone" in the
// other titles, so without a monitor the list has only one microphone.
std::vector<SoundDevice> ArrangeSoundDevices(const SoundServer& server);

// Titles for a microphone and for the computer's sounds, of a device with this name.
std::string MicrophoneTitle(const std::string& name);
std::string ComputerTitle(const std::string& name);

// Removes everything from a name that would confuse a parser of the list: brackets become
// parentheses, control characters blanks, and nothing looks like a screen or a header.
std::string PlainName(const std::string& name);

struct Listing
{
    size_t screens = 0;
    std::string noScreenReason; // printed instead if there are no screens
    std::vector<SoundDevice> sound;
};

// The text of the list, in ffmpeg's format on macOS. `tag` is the number in each line's tag.
// Without sound devices their header is left out, because the recorder would take a screen for one.
std::string ListingText(const Listing& listing, uintptr_t tag);

} // namespace tool
