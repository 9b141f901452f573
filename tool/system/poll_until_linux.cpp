#include "tool/system/poll_until.h"

#include <algorithm>
#include <ctime>

namespace tool {

bool PollUntil(pollfd& descriptor, SteadyTime until)
{
    constexpr int64_t second = 1000000000;
    const auto left =
        std::chrono::ceil<std::chrono::nanoseconds>(until - std::chrono::steady_clock::now());
    const int64_t time = std::max<int64_t>(left.count(), 0);
    const timespec patience{static_cast<time_t>(time / second), static_cast<long>(time % second)};
    return ppoll(&descriptor, 1, &patience, nullptr) > 0;
}

} // namespace tool
