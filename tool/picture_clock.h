// When each picture of a recording is due, and which one is due now.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

using SteadyTime = std::chrono::steady_clock::time_point;

// Pictures a second, as an exact fraction.
struct PictureRate
{
    int64_t pictures = 30;
    int64_t seconds = 1;
    bool operator==(const PictureRate&) const = default;
};

// "30", "29.97" or "30000/1001", more than 0 and up to 1000 a second; else nothing.
std::optional<PictureRate> ParseRate(std::string_view text);

// Counts places from 0 on. All times come from the start, so that nothing adds up over hours.
class PictureClock
{
public:
    PictureClock(PictureRate rate, SteadyTime start);

    SteadyTime Due(int64_t place) const;
    // The place whose picture a grab at this time is; never before `next`, the first one open. What
    // lies between was missed.
    int64_t PlaceAt(SteadyTime now, int64_t next) const;

private:
    PictureRate m_rate;
    SteadyTime m_start;
};

} // namespace tool
