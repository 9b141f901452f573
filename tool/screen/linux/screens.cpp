#include "tool/screen/portal/portal_screen.h"
#include "tool/screen/screen.h"
#include "tool/screen/wayland/wayland_screens.h"
#include "tool/screen/x11/monitors.h"
#include "tool/screen/x11/x11_screen.h"
#include "tool/system/environment.h"

namespace tool {
namespace {

std::string NoneReason(const std::string& display)
{
    return display.empty()
               ? "No screen can be recorded: neither WAYLAND_DISPLAY nor DISPLAY is set"
               : "No screen can be recorded: the X display " + display + " cannot be opened";
}

// Wayland comes first: the X server that it often starts too shows its own windows at most, before
// a black screen.
std::string WaylandName()
{
    return Variable("WAYLAND_DISPLAY");
}

// For compositors whose own way does not work well, and for tests.
bool IsPortalWanted()
{
    return !Variable("LUMENFOLD_USE_PORTAL").empty();
}

} // namespace

Screens ReadScreens()
{
    if (const std::string name = WaylandName(); !name.empty()) {
        return ReadWaylandScreens(name);
    }
    const std::string display = Variable("DISPLAY");
    auto monitors = ReadMonitors(display);
    if (!monitors) {
        return {{}, NoneReason(display)};
    }
    if (monitors->areOfWayland) {
        return {{},
                "No screen can be recorded: the X display " + display +
                    " is part of a Wayland session, and WAYLAND_DISPLAY is not set"};
    }
    return {std::move(monitors->areas), {}};
}

OpenedScreen OpenScreen(const Rectangle& area, const WaitForScreen& wait)
{
    if (const std::string name = WaylandName(); !name.empty()) {
        // Without a question where that is possible.
        auto opened = IsPortalWanted() ? std::nullopt : OpenWaylandScreen(name, area);
        return opened ? *std::move(opened) : OpenPortalScreen(area, wait);
    }
    const Rectangle even = EvenSized(area);
    return {OpenX11Screen(Variable("DISPLAY"), even), even, {}};
}

bool FfmpegCanGrab()
{
    return WaylandName().empty();
}

} // namespace tool
