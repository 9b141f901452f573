// The monitors of the X display.
#pragma once

#include "tool/screen/rectangle.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The rectangles of the monitors on the display's default screen, the primary monitor first.
// Without RandR the whole screen counts as one monitor. Returns nothing if the display cannot be
// opened.
std::optional<std::vector<Rectangle>> ReadMonitors(const std::string& display);

} // namespace tool
