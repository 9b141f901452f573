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

void CloseBusConnection::operator()(DBusConnection* connection) const
{
    Bus()->connectionClose(connection);
    Bus()->connectionUnref(connection);
}

BusConnection ConnectToSessionBus()
{
    // Without an address the library would start a bus.
    const std::string address = SessionBusAddress();
    BusConnection connection(address.empty() || Bus() == nullptr
                                 ? nullptr
                                 : Bus()->connectionOpenPrivate(address.c_str(), nullptr));
    if (connection && Bus()->busRegister(connection.get(), nullptr) == 0) {
        connection.reset();
    }
    return connection;
}

} // namespace tool
