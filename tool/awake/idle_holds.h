#pragma once

#include <vector>

namespace tool {

// A way to hold off blanking and locking. Runs in a thread of its own and returns when it does not
// work, or does not work any more, or when nothing is left to do. What it holds is released by the
// end of the process, for a process can be killed.
using IdleHold = void (*)();

// Those of this session. Each platform defines it.
std::vector<IdleHold> IdleHolds();

} // namespace tool
