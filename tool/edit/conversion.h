// The preparation of a movie for a join.
#pragma once

#include "tool/command/command.h"

#include <string>

namespace tool {

// Looks at the movie and writes a note about it in place of a copy: the join reads the movie
// itself. Prints one "frame=" for the recorder, which counts them. Returns an exit code; on failure
// after a message and without a note.
int RunConversion(const std::string& ffmpeg, const Convert& convert);

} // namespace tool
