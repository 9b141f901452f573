#include "tool/system/parent_end.h"

#include <cerrno>
#include <sys/prctl.h>
#include <unistd.h>

namespace tool {

bool SignalAtParentEnd(int number, pid_t parent)
{
    if (prctl(PR_SET_PDEATHSIG, number) != 0) {
        return false;
    }
    if (getppid() != parent) {
        errno = ESRCH;
        return false;
    }
    return true;
}

} // namespace tool
