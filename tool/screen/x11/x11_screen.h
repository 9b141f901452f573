// Pictures of a part of the X screen, with the mouse pointer.
#pragma once

#include "tool/screen/screen.h"

#include <memory>
#include <string>

namespace tool {

// Returns nothing if this does not work: no display, no XFixes, or pixels other than four bytes
// with 8 or 10 bits per colour and blue in the lowest bits.
std::unique_ptr<Screen> OpenX11Screen(const std::string& display, const Rectangle& area);

} // namespace tool
