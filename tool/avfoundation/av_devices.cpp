#include "tool/avfoundation/av_devices.h"

#include "tool/avfoundation/sound_arrangement.h"
#include "tool/capture/capture.h"
#include "tool/devices/remembered_devices.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/system/complaint.h"

#include <chrono>
#include <cstdint>
#include <cstdio>

namespace tool {
namespace {

constexpr std::chrono::seconds listPatience{10};

std::string NoneReason(const std::string& ffmpeg, const std::string& text, bool isListed)
{
    const std::string start = "No screen can be recorded: ";
    if (ffmpeg.empty()) {
        return start + NoFfmpegReason();
    }
    if (isListed) {
        return start + "macOS lists none";
    }
    return start + (text.find("Unknown input format") != std::string::npos
                        ? ffmpeg + " was built without AVFoundation"
                        : ffmpeg + " does not list any device");
}

} // namespace

FoundAvDevices FindAvDevices(const std::string& ffmpeg)
{
    const std::string text =
        ffmpeg.empty()
            ? std::string()
            : Ask(ffmpeg, {"-hide_banner", "-f", "avfoundation", "-list_devices", "true", "-i", ""},
                  {.patience = listPatience});
    FoundAvDevices found;
    found.devices = ParseDeviceText(text);
    found.firstScreen = FirstScreen(found.devices.video);
    if (found.Screens() == 0) {
        found.noneReason = NoneReason(ffmpeg, text, found.devices.isListed);
    }
    return found;
}

int PrintListing(const std::string& ffmpeg)
{
    const FoundAvDevices found = FindAvDevices(ffmpeg);
    Listing listing;
    listing.screens = found.Screens();
    listing.noScreenReason = found.noneReason + ".";
    listing.sound = ArrangeAvSound(found.devices.sound);
    std::vector<std::string> sources;
    for (const SoundDevice& device : listing.sound) {
        sources.push_back(device.source);
    }
    RememberDevices(sources);
    const std::string text =
        ListingText(listing, reinterpret_cast<uintptr_t>(&listing) & 0xffffffffffff);
    std::fwrite(text.data(), 1, text.size(), stderr);
    return failed;
}

} // namespace tool
