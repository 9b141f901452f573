#pragma once

#include <sys/types.h>

namespace tool {

// Before the fork of a child process that calls SignalAtParentEnd(). Returns false, with errno, on
// failure.
bool PrepareParentEnd();

// For a child process, before exec or instead of it: requests this signal, once, for the time when
// the process that has forked it ends. Returns false, with errno, if that is not possible or
// `parent`, that process, has ended already. A leader of a process group requests it for the group.
bool SignalAtParentEnd(int number, pid_t parent);

} // namespace tool
