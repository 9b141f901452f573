// The sources the sound server offers (PulseAudio, or PipeWire's server in its place).
#pragma once

#include "tool/listing.h"

#include <chrono>
#include <optional>

namespace tool {

// Asks the sound server; never starts one. Nothing when there is none, or when it has not answered
// within the time.
std::optional<SoundServer> ReadSoundServer(std::chrono::milliseconds patience);

} // namespace tool
