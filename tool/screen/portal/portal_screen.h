#pragma once

#include "tool/screen/screen.h"

namespace tool {

// Opens the screen that a person chooses in the desktop's dialog, or without one if this was
// allowed for `area` before. The frames have the size of the chosen monitor. Its first picture is
// there at once: it is black if nothing on the screen changes for a second.
OpenedScreen OpenPortalScreen(const Rectangle& area, const WaitForScreen& wait);

} // namespace tool
