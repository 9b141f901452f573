// How a screen's colours are stored.
#pragma once

#include "tool/screen/x11/display.h"

#include <optional>

namespace tool {

// The bits per colour, 8 or 10, of pixels of four bytes with blue in the lowest bits. Returns
// nothing for all other pixels.
std::optional<int> ColourBits(const Display& display);

} // namespace tool
