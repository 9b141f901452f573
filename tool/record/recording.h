#pragma once

#include "tool/command/command.h"

#include <sys/types.h>

namespace tool {

// Records until ffmpeg is told to quit. `recorder`: the parent process at the start of this one.
// Becomes ffmpeg. Returns only on failure: an exit code, after a message.
int RunRecording(const std::string& ffmpeg, const Record& record, pid_t recorder);

} // namespace tool
