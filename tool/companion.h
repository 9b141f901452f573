#pragma once

#include <functional>
#include <vector>

namespace tool {

// Starts a child process that lives beside ffmpeg, since this process becomes ffmpeg, and ends with
// it at the latest. Of all that is open it has `kept` alone, under other numbers that `run` is
// given in the same order; signals from a terminal do not reach it. From then on no child of this
// process leaves an exit code behind. False, with errno, when there can be no child.
bool StartCompanion(const std::vector<int>& kept,
                    const std::function<void(const std::vector<int>&)>& run);

} // namespace tool
