#include "tool/system/pipe.h"

#include <fcntl.h>

namespace tool {

void MakeNonBlocking(const Descriptor& descriptor)
{
    const int flags = fcntl(descriptor.Number(), F_GETFL);
    fcntl(descriptor.Number(), F_SETFL, flags | O_NONBLOCK);
}

} // namespace tool
