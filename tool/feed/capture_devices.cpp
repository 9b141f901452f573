#include "tool/feed/capture_devices.h"

#include "tool/capture/capture.h"
#include "tool/devices/listing.h"
#include "tool/devices/remembered_devices.h"
#include "tool/screen/screen.h"
#include "tool/sound/pulse/sound_devices.h"
#include "tool/system/complaint.h"

#include <chrono>
#include <cstdio>

namespace tool {
namespace {

constexpr std::chrono::milliseconds soundPatience{1500};

std::vector<SoundDevice> ReadSoundDevices()
{
    const auto server = ReadSoundServer(soundPatience);
    return server ? ArrangeSoundDevices(*server) : std::vector<SoundDevice>();
}

std::vector<std::string> SourcesOf(const std::vector<SoundDevice>& devices)
{
    std::vector<std::string> sources;
    sources.reserve(devices.size());
    for (const SoundDevice& device : devices) {
        sources.push_back(device.source);
    }
    return sources;
}

} // namespace

int PrintListing(const std::string& /*ffmpeg*/)
{
    Listing listing;
    const Screens screens = ReadScreens();
    listing.screens = screens.areas.size();
    listing.noScreenReason = screens.noneReason + ".";
    listing.sound = ReadSoundDevices();
    RememberDevices(SourcesOf(listing.sound));
    const std::string text =
        ListingText(listing, reinterpret_cast<uintptr_t>(&listing) & 0xffffffffffff);
    std::fwrite(text.data(), 1, text.size(), stderr);
    return failed;
}

std::optional<std::vector<std::string>> SourcesFor(const std::vector<int>& numbers)
{
    const auto recalled = RecallDevices();
    const std::vector<std::string> known = recalled || numbers.empty()
                                               ? recalled.value_or(std::vector<std::string>())
                                               : SourcesOf(ReadSoundDevices());
    std::vector<std::string> chosen;
    for (const int number : numbers) {
        if (static_cast<size_t>(number) >= known.size()) {
            Complain("there is no audio device " + std::to_string(number) + ", the list has " +
                     std::to_string(known.size()));
            return std::nullopt;
        }
        chosen.push_back(known[static_cast<size_t>(number)]);
    }
    return chosen;
}

} // namespace tool
