#include "tool/bus/session_bus.h"

#include "tool/system/environment.h"

#include <filesystem>
#include <system_error>

namespace tool {

std::string SessionBusAddress()
{
    std::string address = Variable("DBUS_SESSION_BUS_ADDRESS");
    const std::string runtime = Variable("XDG_RUNTIME_DIR");
    std::error_code error;
    if (address.empty() && !runtime.empty() &&
        std::filesystem::is_socket(runtime + "/bus", error)) {
        address = "unix:path=" + runtime + "/bus";
    }
    return address;
}

BusConnection ConnectToSessionBus()
{
    return ConnectToBus(SessionBusAddress());
}

} // namespace tool
