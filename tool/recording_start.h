// The moment a recording starts at, shared by the processes beside ffmpeg: picture and sound count
// from it.
#pragma once

#include "tool/picture_clock.h"

#include <atomic>
#include <optional>
#include <sys/types.h>

namespace tool {

class RecordingStart
{
public:
    // In memory that this process and its children share until they end; nothing when there is
    // none.
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
