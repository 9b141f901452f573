#include "tool/system/poll_until.h"

#include <algorithm>
#include <limits>

namespace tool {

// ppoll() is missing, so the wait is up to a millisecond too long.
bool PollUntil(pollfd& descriptor, SteadyTime until)
{
    const int64_t left =
        std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now())
            .count();
    const auto wait = std::clamp<int64_t>(left, 0, std::numeric_limits<int>::max());
    return poll(&descriptor, 1, static_cast<int>(wait)) > 0;
}

} // namespace tool
