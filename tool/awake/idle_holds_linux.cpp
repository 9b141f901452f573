#include "tool/awake/idle_holds.h"
#include "tool/awake/logind.h"
#include "tool/awake/session_services.h"
#include "tool/awake/x11_screen_saver.h"
#include "tool/system/environment.h"

namespace tool {

std::vector<IdleHold> IdleHolds()
{
    std::vector<IdleHold> holds{HoldSessionServices, HoldLogind};
    // In a Wayland session the X server blanks nothing, and a connection may start one.
    if (Variable("WAYLAND_DISPLAY").empty()) {
        holds.push_back(HoldX11ScreenSaver);
    }
    return holds;
}

} // namespace tool
