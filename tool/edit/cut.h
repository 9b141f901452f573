#pragma once

#include "tool/command/command.h"

namespace tool {

// The arguments for ffmpeg, without the output. With `seeks` they seek in the input: seeking in the
// output, as the recorder's command does, drops frames up to the next sync sample and leaves sound
// without a picture. So ffmpeg copies from the sync sample before the start and writes an edit list
// that hides what comes earlier.
Arguments CutArguments(const Cut& cut, bool seeks);

// Returns the exit code.
int RunCut(const std::string& ffmpeg, const Cut& cut);

} // namespace tool
