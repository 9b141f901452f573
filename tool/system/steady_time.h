#pragma once

#include <chrono>

namespace tool {

// A moment of the clock that never jumps.
using SteadyTime = std::chrono::steady_clock::time_point;

} // namespace tool
