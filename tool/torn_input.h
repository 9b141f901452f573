// Recordings that were cut short, as inputs.
#pragma once

#include "tool/arguments.h"

namespace tool {

// The same command reading, of each recording whose last piece was not written to its end, what
// lies before that piece. ffmpeg refuses such a file altogether, or complains at its end, which the
// recorder takes for a failure. The files stay as they are.
Arguments WithoutTornEnds(Arguments arguments);

} // namespace tool
