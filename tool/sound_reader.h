// Reads sources of the sound server as they play, and comes back to them when they went away.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace tool {

using SteadyTime = std::chrono::steady_clock::time_point;

// Gets what the reader hears. Called from within SoundReader::Wait only.
struct SoundListener
{
    // Interleaved stereo samples of a source, and when the first of them was captured.
    std::function<void(size_t source, SteadyTime captured, std::span<const int16_t> stereo)> sound;
    // The source was opened (again): nothing joins what it gave before.
    std::function<void(size_t source)> opened;
};

class SoundReader
{
public:
    // `sources`: the server's names of them. `rate`: samples a second of what is delivered.
    SoundReader(std::vector<std::string> sources, int rate, SoundListener listener);
    SoundReader(const SoundReader&) = delete;
    SoundReader& operator=(const SoundReader&) = delete;
    ~SoundReader();

    // Works for about this long. Returns sooner when something was heard; never fails: a server or
    // source that is not there is tried again twice a second.
    void Wait(std::chrono::milliseconds time);

private:
    struct Private;
    std::unique_ptr<Private> m_p;
};

} // namespace tool
