#pragma once

#include "tool/capture/capture.h"
#include "tool/command/command.h"

#include <string>
#include <sys/types.h>

namespace tool {

// Records with this ffmpeg as a child process until the end is asked for (see supervisor.h).
// Delivers pictures and sound to it, and settles the file when it has ended. `recorder`: the parent
// process at the start of this one; nothing is recorded for one that is gone. `open`: the
// platform's OpenCapture(). Returns ffmpeg's exit code, 128 + N if signal N has ended it, or after
// a message a code of our own.
int RunRecording(const std::string& ffmpeg, const Record& record, pid_t recorder,
                 decltype(OpenCapture) open);

} // namespace tool
