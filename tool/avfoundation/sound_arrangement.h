// Which devices of a Mac are microphones, and which one has the computer's sounds.
#pragma once

#include "tool/avfoundation/device_text.h"
#include "tool/devices/listing.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Orders and names the devices for the recorder: microphones first, each with "Microphone" in its
// title whatever the language, and a loopback device last as the computer's sounds. Without one
// there is one microphone only, because the recorder takes the last device for the computer's
// sounds. A device's `source` says which it is, also when numbers have changed: see PlaceOf().
std::vector<SoundDevice> ArrangeAvSound(const std::vector<AvDevice>& devices);

// The number that such a device has now, or nothing if it is gone.
std::optional<size_t> PlaceOf(const std::string& source, const std::vector<AvDevice>& devices);

} // namespace tool
