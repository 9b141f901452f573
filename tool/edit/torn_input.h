// Interrupted recordings as inputs.
#pragma once

#include "tool/command/command.h"

namespace tool {

// The same command, but of each recording that ends with an incomplete fragment only the complete
// ones are read. ffmpeg refuses such a file or complains at its end, which the recorder takes for a
// failure. The files are not changed.
Arguments WithoutTornEnds(Arguments arguments);

} // namespace tool
