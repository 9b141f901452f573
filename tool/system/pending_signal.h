#pragma once

#include <sys/types.h>

namespace tool {

// Whether this signal has been sent to a process that blocks it. Always false where the system does
// not say so.
bool HasPendingSignal(pid_t process, int number);

} // namespace tool
