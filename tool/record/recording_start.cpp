#include "tool/record/recording_start.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace tool {

static_assert(std::atomic<int64_t>::is_always_lock_free && std::atomic<pid_t>::is_always_lock_free);

RecordingStart* RecordingStart::Make()
{
    void* memory = mmap(nullptr, sizeof(RecordingStart), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) RecordingStart;
}

void RecordingStart::Set(SteadyTime moment)
{
    m_nMoment =
        std::chrono::duration_cast<std::chrono::nanoseconds>(moment.time_since_epoch()).count();
}

std::optional<SteadyTime> RecordingStart::Get() const
{
    const int64_t moment = m_nMoment;
    if (moment == 0) {
        return std::nullopt;
    }
    return SteadyTime(std::chrono::nanoseconds(moment));
}

void RecordingStart::NameGrabber()
{
    m_nGrabber = getpid();
}

bool RecordingStart::GrabberEnded() const
{
    const pid_t grabber = m_nGrabber;
    return grabber != 0 && kill(grabber, 0) != 0 && errno == ESRCH;
}

} // namespace tool
