#include "tool/capture/recording_time.h"

#include <chrono>

namespace tool {
namespace {

int64_t Number(SteadyTime moment)
{
    return std::chrono::duration_cast<std::chrono::nanoseconds>(moment.time_since_epoch()).count();
}

std::optional<SteadyTime> Moment(int64_t number)
{
    return number == 0 ? std::nullopt : std::optional(SteadyTime(std::chrono::nanoseconds(number)));
}

} // namespace

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
    return Moment(m_nEnd);
}

} // namespace tool
