// The monitors of the X display.
#pragma once

#include "tool/screen/rectangle.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct Monitors
{
    std::vector<Rectangle> areas; // the primary monitor first
    bool areOfWayland = false;    // the server is XWayland, which has no picture of them
};

// The monitors on the display's default screen. Without RandR the whole screen counts as one.
// Returns nothing if the display cannot be opened.
std::optional<Monitors> ReadMonitors(const std::string& display);

} // namespace tool
