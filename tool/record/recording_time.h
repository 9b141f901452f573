// The beginning and the end of a recording, for those that deliver its pictures and its sound.
#pragma once

#include "tool/system/steady_time.h"

#include <atomic>
#include <optional>
#include <sys/types.h>

namespace tool {

class RecordingTime
{
public:
    // Creates one in memory shared with child processes. Returns null on failure. Never freed.
    static RecordingTime* Make();

    // The moment of the first picture. Everything is timed from it.
    void Begin(SteadyTime moment);
    std::optional<SteadyTime> Start() const;

    // What is later than this moment is not recorded. The first call counts.
    void Finish(SteadyTime moment);
    std::optional<SteadyTime> End() const;

    // The process that takes the pictures, by its own call. The recording ends with it.
    void NameGrabber();
    bool GrabberEnded() const;

private:
    std::atomic<int64_t> m_nStart = 0; // ns of the steady clock; 0: not yet
    mutable std::atomic<int64_t> m_nEnd = 0;
    std::atomic<pid_t> m_nGrabber = 0;
};

} // namespace tool
