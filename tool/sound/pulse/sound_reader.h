// Reads sources of the sound server in real time and reconnects to them when they come back.
#pragma once

#include "tool/system/steady_time.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tool {

// Receives the sound. Called from SoundReader::Wait() only.
struct SoundListener
{
    // Interleaved stereo samples of a source, and when the first one was captured or, for the
    // monitor of an output, is heard.
    std::function<void(size_t source, SteadyTime captured, std::span<const int16_t> stereo)> sound;
    // The source was opened or reopened, maybe with another output's sound: what follows is not
    // contiguous with what came before.
    std::function<void(size_t source)> opened;
};

class SoundReader
{
public:
    // `sources`: the server's names, or `computerSounds`, which follows the default output. A
    // source with a name is never exchanged for another. `rate`: the sample rate to deliver.
    SoundReader(std::vector<std::string> sources, int rate, SoundListener listener);
    SoundReader(const SoundReader&) = delete;
    SoundReader& operator=(const SoundReader&) = delete;
    ~SoundReader();

    // Runs the event loop for about this long, or less if there is sound. Never fails: a missing
    // server or source is tried again twice a second, a new default output at once.
    void Wait(std::chrono::milliseconds time);

private:
    struct Private;
    std::unique_ptr<Private> m_p;
};

} // namespace tool
