#include "tool/system/parent_end.h"
#include "tool/system/pipe.h"

#include <cerrno>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

// A pipe that nobody writes to. The kernel closes its only write end with the process that made it.
//
// The signal that a child can ask for by prctl() comes for each thread of a killed process that
// ends after the one that forked the child: ffmpeg gets it up to three times, and from the second
// on it stops writing.
struct Lifeline
{
    // This process has no read end: closing that as well would send the signal again.
    Descriptor writeEnd = [] {
        auto pipe = MakePipe();
        return pipe ? std::move(pipe->write) : Descriptor();
    }();
    std::string name = "/proc/self/fd/" + std::to_string(writeEnd.Number());
};

Lifeline& TheLifeline()
{
    static Lifeline lifeline;
    return lifeline;
}

} // namespace

bool PrepareParentEnd()
{
    return TheLifeline().writeEnd.IsOpen();
}

bool SignalAtParentEnd(int number, pid_t parent)
{
    // A read end, which stays open in the program. The write end does not, or the parent's would
    // not be the only one.
    const int end = open(TheLifeline().name.c_str(), O_RDONLY | O_NONBLOCK);
    const pid_t target = getpgrp() == getpid() ? -getpid() : getpid();
    if (end < 0 || fcntl(end, F_SETOWN, target) != 0 || fcntl(end, F_SETSIG, number) != 0 ||
        fcntl(end, F_SETFL, O_ASYNC | O_NONBLOCK) != 0) {
        return false;
    }
    TheLifeline().writeEnd.Close();
    if (getppid() != parent) {
        errno = ESRCH;
        return false;
    }
    return true;
}

} // namespace tool
