// The start time of a recording, shared by the processes beside ffmpeg. Frames and sound are timed
// from it.
#pragma once

#include "tool/record/picture_clock.h"

#include <atomic>
#include <optional>
#include <sys/types.h>

namespace tool {

class RecordingStart
{
public:
    // Creates one in memory shared with child processes. Returns null on failure. Never freed.
    static RecordingStart* Make();

    void Set(SteadyTime moment);
    std::optional<SteadyTime> Get() const;

    // The process that takes the pictures, by its own call, and whether it has ended since.
    void NameGrabber();
    bool GrabberEnded() const;

private:
    std::atomic<int64_t> m_nMoment = 0; // ns of the steady clock; 0: not yet
    std::atomic<pid_t> m_nGrabber = 0;
};

} // namespace tool
