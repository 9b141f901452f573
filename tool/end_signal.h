#pragma once

#include <sys/types.h>

namespace tool {

// Blocks SIGHUP in this process, and in ffmpeg that it becomes, and asks for one when the parent
// ends. A pending SIGHUP is the request to end that IsEndAsked sees. ffmpeg would be killed by
// SIGHUP, and on a second SIGTERM it drops what it has not written yet, so at most one of all
// requests may reach it as a signal. Does nothing if SIGHUP is ignored.
void KeepEndSignals();

// Whether a SIGHUP is pending for the process.
bool IsEndAsked(pid_t process);

} // namespace tool
