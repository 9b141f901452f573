#include "tool/system/pipe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

namespace tool {

void MakeNonBlocking(const Descriptor& descriptor)
{
    const int flags = fcntl(descriptor.Number(), F_GETFL);
    fcntl(descriptor.Number(), F_SETFL, flags | O_NONBLOCK);
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
