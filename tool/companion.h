#pragma once

#include <functional>
#include <sys/types.h>
#include <vector>

namespace tool {

// Starts a child process that lives beside ffmpeg, since this process becomes ffmpeg, and ends with
// it at the latest. Of all that is open it has `kept` alone, under other numbers that `run` is
// given in the same order. Signals from a terminal and SIGTERM do not end it, see
// PassEndSignalsTo. From then on no child of this process leaves an exit code behind. False, with
// errno, when there can be no child.
bool StartCompanion(const std::vector<int>& kept,
                    const std::function<void(const std::vector<int>&)>& run);

// Forwards SIGTERM and SIGHUP of this process as SIGHUP to its parent while that is `parent`, so
// that a signal to any process of a recording ends the recording. Ignored signals stay ignored.
void PassEndSignalsTo(pid_t parent);

// Whether this process ignores the signal, as SIGHUP under nohup.
bool IsIgnored(int signal);

} // namespace tool
