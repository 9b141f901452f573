#include "tool/system/pipe.h"

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

} // namespace tool
