#include "tool/system/pipe.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <sys/uio.h>

namespace tool {

std::optional<Pipe> MakePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return std::nullopt;
    }
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

size_t SetCapacity(const Descriptor& pipe, size_t bytes)
{
    constexpr int smallest = 4096;
    fcntl(pipe.Number(), F_SETPIPE_SZ, static_cast<int>(bytes));
    return static_cast<size_t>(std::max(fcntl(pipe.Number(), F_GETPIPE_SZ), smallest));
}

ssize_t WriteLasting(const Descriptor& pipe, const void* bytes, size_t size)
{
    static std::atomic<bool> splices = true; // some containers forbid it
    if (splices) {
        const iovec piece{const_cast<void*>(bytes), size};
        const ssize_t count = vmsplice(pipe.Number(), &piece, 1, SPLICE_F_NONBLOCK);
        splices = count >= 0 || (errno != EPERM && errno != ENOSYS && errno != EINVAL);
        if (splices) {
            return count;
        }
    }
    return write(pipe.Number(), bytes, size);
}

} // namespace tool
