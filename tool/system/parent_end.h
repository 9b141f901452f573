#pragma once

#include <sys/types.h>

namespace tool {

// For a child process, between fork and exec: requests this signal for the time when the thread (on
// macOS: the process) that has forked it ends. Returns false, with errno, if that is not possible
// or `parent`, the process that has forked it, has ended already.
bool SignalAtParentEnd(int number, pid_t parent);

} // namespace tool
