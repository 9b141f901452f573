#include "tool/system/inheritance.h"

#include <linux/close_range.h>
#include <unistd.h>

namespace tool {

// Where the kernel is too old for it, descriptors that our parent left open are inherited; our own
// are closed on exec anyway.
void InheritStandardStreamsOnly()
{
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

} // namespace tool
