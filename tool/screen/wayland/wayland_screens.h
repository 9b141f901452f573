// The screens of a Wayland session.
#pragma once

#include "tool/screen/screen.h"

#include <optional>
#include <string>

namespace tool {

// The outputs, from left to right. `name` is that of the environment variable WAYLAND_DISPLAY. Asks
// nobody.
Screens ReadWaylandScreens(const std::string& name);

// Opens one of these outputs where programs may copy pictures without asking. Returns nothing if
// the compositor offers another way only.
std::optional<OpenedScreen> OpenWaylandScreen(const std::string& name, const Rectangle& area);

} // namespace tool
