// The monitors of the X display.
#pragma once

#include "tool/arguments.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The monitors' rectangles on the default screen of this display, the primary one first. Without
// RandR the whole screen is the one monitor. Nothing when the display cannot be opened.
std::optional<std::vector<Rectangle>> ReadMonitors(const std::string& display);

} // namespace tool
