#include "tool/edit/ticks.h"

#include <algorithm>

namespace tool {

bool Ticks::IsDue(double share, SteadyTime now)
{
    const double due = std::clamp(share, 0.0, 1.0) * m_most;
    if (m_made + 1 > due || (m_made > 0 && now - m_last < tickDistance)) {
        return false;
    }
    ++m_made;
    m_last = now;
    return true;
}

} // namespace tool
