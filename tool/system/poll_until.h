#pragma once

#include "tool/system/steady_time.h"

#include <poll.h>

namespace tool {

// poll() for one descriptor, to the microsecond (on macOS: to the millisecond). Returns whether
// something has happened to it, at once if that time has passed. Also returns when a signal has
// been handled.
bool PollUntil(pollfd& descriptor, SteadyTime until);

} // namespace tool
