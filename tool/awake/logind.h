#pragma once

namespace tool {

// Holds an idle lock of logind, or elogind. swayidle follows it, and so do other idle watchers of
// Wayland compositors; these compositors' own interface for it wants a visible window.
void HoldLogind();

} // namespace tool
