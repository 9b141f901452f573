// The recorder's measure of progress: each chunk of output with "frame=" in it is one tick.
#pragma once

#include "tool/system/steady_time.h"

#include <chrono>

namespace tool {

// Two ticks that are read at once count as one.
constexpr std::chrono::milliseconds tickDistance{60};

// Spreads the ticks of a job over the work done.
class Ticks
{
public:
    explicit Ticks(int most) : m_most(most) {}

    // Whether to tick now, when `share` of the work (0 to 1) is done. Counts it.
    bool IsDue(double share, SteadyTime now);

    int Made() const { return m_made; }

private:
    int m_most;
    int m_made = 0;
    SteadyTime m_last;
};

} // namespace tool
