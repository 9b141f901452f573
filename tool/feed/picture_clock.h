// Tells when each frame of a recording is due, and which one is due now.
#pragma once

#include "tool/system/steady_time.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

// A frame rate as an exact fraction.
struct PictureRate
{
    int64_t pictures = 30;
    int64_t seconds = 1;
    bool operator==(const PictureRate&) const = default;
};

// Parses "30", "29.97" or "30000/1001", above 0 and up to 1000 fps. Returns nothing for other
// texts.
std::optional<PictureRate> ParseRate(std::string_view text);

// Counts frames ("places") from 0. All times are computed from the start, so errors do not add up.
class PictureClock
{
public:
    PictureClock(PictureRate rate, SteadyTime start);

    SteadyTime Due(int64_t place) const;
    // The place that a grab at this time belongs to; at least `next`, the first open one. The
    // places in between were missed.
    int64_t PlaceAt(SteadyTime now, int64_t next) const;

private:
    PictureRate m_rate;
    SteadyTime m_start;
};

} // namespace tool
