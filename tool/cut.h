// The recorder's command for a cut, and the one that ffmpeg is given for it.
#pragma once

#include "tool/arguments.h"

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

// Nothing when it is any other command, or a cut of no length, which is ffmpeg's to judge.
std::optional<Cut> ReadCut(const Arguments& arguments);

// The command that cuts by seeking in the source. Seeking in the output, as the recorder asks for,
// throws away pictures up to the next key frame: there would be sound without a picture. This way
// all from the key frame before is copied, and the file tells players from where on to show it.
Arguments TranslateCut(const Cut& cut);

} // namespace tool
