#include "tool/system/pipe.h"

#include <algorithm>
#include <array>
#include <fcntl.h>

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

} // namespace tool
