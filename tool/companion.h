#pragma once

#include <functional>

namespace tool {

// Starts a child process that lives beside ffmpeg, since this process becomes ffmpeg, and ends with
// it at the latest. Of all that is open it keeps `kept` alone (-1: nothing), under another number
// that `run` is given; signals from a terminal do not reach it. From then on no child of this
// process leaves an exit code behind. False, with errno, when there can be no child.
bool StartCompanion(int kept, const std::function<void(int)>& run);

} // namespace tool
