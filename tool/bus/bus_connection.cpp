#include "tool/bus/bus_connection.h"

#include "tool/system/environment.h"

namespace tool {

void CloseBusConnection::operator()(DBusConnection* connection) const
{
    Bus()->connectionClose(connection);
    Bus()->connectionUnref(connection);
}

std::string SystemBusAddress()
{
    const std::string address = Variable("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? "unix:path=/run/dbus/system_bus_socket" : address;
}

BusConnection ConnectToBus(const std::string& address)
{
    // Without an address the library would start a bus.
    BusConnection connection(address.empty() || Bus() == nullptr
                                 ? nullptr
                                 : Bus()->connectionOpenPrivate(address.c_str(), nullptr));
    if (connection && Bus()->busRegister(connection.get(), nullptr) == 0) {
        connection.reset();
    }
    return connection;
}

} // namespace tool
