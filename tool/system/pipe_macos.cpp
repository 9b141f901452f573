#include "tool/system/pipe.h"

#include <array>
#include <fcntl.h>

namespace tool {

// A program that another thread starts between these calls does not get the ends either: see
// InheritStandardStreamsOnly().
std::optional<Pipe> MakePipe()
{
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return std::nullopt;
    }
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    return Pipe{Descriptor(ends[0]), Descriptor(ends[1])};
}

// Cannot be asked for: a pipe grows by itself, to this at most.
size_t SetCapacity(const Descriptor& /*pipe*/, size_t /*bytes*/)
{
    return 65536;
}

ssize_t WriteLasting(const Descriptor& pipe, const void* bytes, size_t size)
{
    return write(pipe.Number(), bytes, size);
}

} // namespace tool
