// The beginning and the end of a recording, shared by the threads that deliver its pictures and its
// sound.
#pragma once

#include "tool/system/steady_time.h"

#include <atomic>
#include <cstdint>
#include <optional>

namespace tool {

class RecordingTime
{
public:
    // The moment of the first picture. Everything is timed from it.
    void Begin(SteadyTime moment);
    std::optional<SteadyTime> Start() const;

    // What is later than this moment is not recorded. The first call counts.
    void Finish(SteadyTime moment);
    std::optional<SteadyTime> End() const;

private:
    std::atomic<int64_t> m_nStart = 0; // ns of the steady clock; 0: not yet
    std::atomic<int64_t> m_nEnd = 0;
};

} // namespace tool
