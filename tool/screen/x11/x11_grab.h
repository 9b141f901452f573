#pragma once

#include "tool/screen/rectangle.h"

#include <string>
#include <vector>

namespace tool {

// The arguments with which ffmpeg itself grabs this area of the display, of even width and height,
// at this rate.
std::vector<std::string> X11GrabInput(const std::string& display, const Rectangle& area,
                                      const std::string& rate);

} // namespace tool
