#include "tool/system/inheritance.h"

#include <fcntl.h>
#include <unistd.h>

namespace tool {

void InheritStandardStreamsOnly()
{
    const int end = getdtablesize();
    for (int number = STDERR_FILENO + 1; number < end; ++number) {
        fcntl(number, F_SETFD, FD_CLOEXEC); // most are not open
    }
}

} // namespace tool
