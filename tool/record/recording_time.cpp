#include "tool/record/recording_time.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <sys/mman.h>
#include <unistd.h>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

static_assert(std::atomic<int64_t>::is_always_lock_free && std::atomic<pid_t>::is_always_lock_free);

int64_t Number(SteadyTime moment)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(moment.time_since_epoch()).count();
}

std::optional<SteadyTime> Moment(int64_t number)
{
    return number == 0 ? std::nullopt : std::optional(SteadyTime(std::chrono::nanoseconds(number)));
}

} // namespace

RecordingTime* RecordingTime::Make()
{
    void* memory = mmap(nullptr, sizeof(RecordingTime), PROT_READ | PROT_WRITE,
                        MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : new (memory) RecordingTime;
}

void RecordingTime::Begin(SteadyTime moment)
{
    m_nStart = Number(moment);
}

std::optional<SteadyTime> RecordingTime::Start() const
{
    return Moment(m_nStart);
}

void RecordingTime::Finish(SteadyTime moment)
{
    int64_t none = 0;
    m_nEnd.compare_exchange_strong(none, Number(moment));
}

std::optional<SteadyTime> RecordingTime::End() const
{
    if (int64_t none = 0; GrabberEnded()) {
        m_nEnd.compare_exchange_strong(none, Number(Clock::now()));
    }
    return Moment(m_nEnd);
}

void RecordingTime::NameGrabber()
{
    m_nGrabber = getpid();
}

bool RecordingTime::GrabberEnded() const
{
    const pid_t grabber = m_nGrabber;
    return grabber != 0 && kill(grabber, 0) != 0 && errno == ESRCH;
}

} // namespace tool
