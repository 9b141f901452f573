#pragma once

#include <functional>
#include <sys/types.h>
#include <vector>

namespace tool {

// Starts a child process that runs beside ffmpeg, which this process becomes, and ends with it at
// the latest. Of the open descriptors it has only `kept`, with other numbers, which `run` gets in
// the same order. Signals from a terminal and SIGTERM do not end it, see PassEndSignalsTo(). From
// then on, children of this process leave no exit code. Returns false, with errno, if there can be
// no child.
bool StartCompanion(const std::vector<int>& kept,
                    const std::function<void(const std::vector<int>&)>& run);

// Forwards SIGTERM and SIGHUP of this process as SIGHUP to its parent while that is `parent`, so
// that a signal to any process of a recording ends the recording. Ignored signals stay ignored.
void PassEndSignalsTo(pid_t parent);

// Whether this process ignores the signal, as SIGHUP under nohup.
bool IsIgnored(int signal);

} // namespace tool
