#include "tool/screen/screen.h"
#include "tool/screen/x11/monitors.h"
#include "tool/screen/x11/x11_screen.h"
#include "tool/system/environment.h"

namespace tool {
namespace {

std::string NoneReason(const std::string& display)
{
    std::string reason = display.empty() ? "No screen can be recorded: DISPLAY is not set"
                                         : "No screen can be recorded: the X display " + display +
                                               " cannot be opened";
    if (!Variable("WAYLAND_DISPLAY").empty()) {
        reason += "; a Wayland session without X gives programs no access to the screen";
    }
    return reason;
}

} // namespace

Screens ReadScreens()
{
    const std::string display = Variable("DISPLAY");
    auto monitors = ReadMonitors(display);
    if (!monitors) {
        return {{}, NoneReason(display)};
    }
    return {*std::move(monitors), {}};
}

OpenedScreen OpenScreen(const Rectangle& area, const WaitForScreen& /*wait*/)
{
    const Rectangle even = EvenSized(area);
    return {OpenX11Screen(Variable("DISPLAY"), even), even, {}};
}

} // namespace tool
