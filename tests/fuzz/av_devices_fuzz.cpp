// The list of devices that ffmpeg prints on macOS: any text, and what the recorder makes of the
// list that `tool` prints for it.
#include "jobs/device_listing.h"
#include "tests/fuzz/target.h"
#include "tool/avfoundation/device_text.h"
#include "tool/avfoundation/sound_arrangement.h"
#include "tool/devices/remembered_devices.h"

#include <algorithm>

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const tool::AvDevices devices = tool::ParseDeviceText(TextOf(data, size));
    const size_t first = tool::FirstScreen(devices.video);
    Require(first <= devices.video.size(), "the screens are among the devices");
    tool::Listing own;
    own.screens = devices.video.size() - first;
    own.noScreenReason = "none";
    own.sound = tool::ArrangeAvSound(devices.sound);
    const DeviceListing read =
        ParseDeviceListing(QString::fromLatin1(tool::ListingText(own, 0x7f0000001000).c_str()));
    Require(read.screen == (own.screens > 0 ? '0' : '\0'), "the first screen is found");
    const int count = static_cast<int>(own.sound.size());
    Require(read.microphone >= -1 && read.microphone < std::max(count, 1),
            "a microphone is listed");
    Require(read.sound >= -1 && read.sound < std::max(count, 1),
            "the computer's sounds are listed");
    Require(count == 0 || read.microphone == 0 || read.sound == 0, "what is listed is offered");
    std::vector<std::string> sources;
    for (const tool::SoundDevice& device : own.sound) {
        const auto place = tool::PlaceOf(device.source, devices.sound);
        Require(place && *place < devices.sound.size(), "a device is found again");
        sources.push_back(device.source);
    }
    Require(tool::ParseRemembered(tool::RememberedText("", sources), "") == sources,
            "what is remembered is recalled");
    return 0;
}
