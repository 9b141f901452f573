#include "tool/system/pipe.h"

#include "tool/system/poll_until.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace tool {

void MakeNonBlocking(const Descriptor& descriptor)
{
    const int flags = fcntl(descriptor.Number(), F_GETFL);
    fcntl(descriptor.Number(), F_SETFL, flags | O_NONBLOCK);
}

bool ReadAll(const Descriptor& pipe, std::string& text, SteadyTime until,
             const std::function<bool()>& goesOn)
{
    constexpr size_t most = 1U << 20U;
    constexpr std::chrono::milliseconds interval{50};
    std::array<char, 4096> bytes{};
    while (text.size() < most) {
        pollfd ready{pipe.Number(), POLLIN, 0};
        if (!PollUntil(ready, std::min(until, std::chrono::steady_clock::now() + interval))) {
            if (std::chrono::steady_clock::now() >= until || (goesOn && !goesOn())) {
                return false;
            }
            continue;
        }
        const ssize_t got = read(pipe.Number(), bytes.data(), bytes.size());
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return got == 0;
        }
        text.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    return false;
}

std::optional<size_t> UnreadBytes(const Descriptor& pipe)
{
    pollfd state{pipe.Number(), 0, 0};
    int unread = 0;
    if (poll(&state, 1, 0) < 0 || (state.revents & POLLERR) != 0 ||
        ioctl(pipe.Number(), FIONREAD, &unread) != 0) {
        return std::nullopt;
    }
    return static_cast<size_t>(unread);
}

} // namespace tool
