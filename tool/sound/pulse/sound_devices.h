// The sources of the sound server (PulseAudio, or PipeWire's PulseAudio server).
#pragma once

#include "tool/sound/sound_server.h"

#include <chrono>
#include <optional>

namespace tool {

// Asks the sound server, without starting one. Returns nothing if there is none or it does not
// answer in time.
std::optional<SoundServer> ReadSoundServer(std::chrono::milliseconds patience);

} // namespace tool
