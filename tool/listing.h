// The list of capture devices as it is printed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// A source of the sound server.
struct SoundSource
{
    std::string name;        // what the server calls it
    std::string description; // what people call it
    std::string monitorOf;   // the output it listens to; empty for a microphone or line input
};

struct SoundServer
{
    std::vector<SoundSource> sources;
    std::string defaultSource;
    std::string defaultSink;
};

// A device as it is offered: the title printed, and the source it stands for.
struct SoundDevice
{
    std::string title;
    std::string source;
    bool operator==(const SoundDevice&) const = default;
};

// Microphones first, the default one leading; last the monitor of the default output. Readers take
// the last device for the computer's sounds and look for "Microphone" in the other titles, so
// without such a monitor only one microphone is offered.
std::vector<SoundDevice> ArrangeSoundDevices(const SoundServer& server);

// The name without what would confuse a reader of the list: brackets become parentheses, control
// characters blanks; nothing is left that names a screen or looks like a header.
std::string PlainName(const std::string& name);

struct Listing
{
    size_t screens = 0;
    std::string noScreenReason; // printed in place of the screens when there are none
    std::vector<SoundDevice> sound;
};

// The whole text, lines and order as macOS prints them. `tag` is the number in each line's tag.
// Without sound devices the header for them is left out: readers would take a screen for one.
std::string ListingText(const Listing& listing, uintptr_t tag);

} // namespace tool
