#pragma once

#include <sys/types.h>

namespace tool {

// Blocks SIGHUP in this process, and so in ffmpeg, which it becomes, and requests one when the
// parent ends. IsEndAsked() takes a pending SIGHUP as the request to end. ffmpeg would be killed by
// SIGHUP, and drops unwritten data on a second SIGTERM, so at most one request may reach it as a
// signal. Does nothing if SIGHUP is ignored.
void KeepEndSignals();

// Whether a SIGHUP is pending for the process.
bool IsEndAsked(pid_t process);

} // namespace tool
