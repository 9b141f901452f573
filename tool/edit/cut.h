#pragma once

#include "tool/command/command.h"

namespace tool {

// The ffmpeg command that cuts by seeking in the input. Seeking in the output, as the recorder's
// command does, drops frames up to the next sync sample and leaves sound without a picture. This
// one copies from the sync sample before the start and writes an edit list that hides what comes
// earlier.
Arguments SeekingCut(const Cut& cut);

// Becomes ffmpeg. Returns only on failure: an exit code, after a message.
int RunCut(const std::string& ffmpeg, const Cut& cut);

} // namespace tool
