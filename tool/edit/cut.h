// The recorder's command for a cut and the ffmpeg command for it.
#pragma once

#include "tool/command/arguments.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

struct Cut
{
    std::string source;
    int64_t start = 0;  // seconds, 0 or more
    int64_t length = 0; // seconds, more than 0
    std::string destination;
};

// Returns nothing if this is a different command or a cut without length, which ffmpeg rejects.
std::optional<Cut> ReadCut(const Arguments& arguments);

// The command that cuts by seeking in the input. Seeking in the output, as the recorder's command
// does, drops frames up to the next sync sample and leaves sound without a picture. This one copies
// from the sync sample before the start and writes an edit list that hides what comes earlier.
Arguments TranslateCut(const Cut& cut);

} // namespace tool
