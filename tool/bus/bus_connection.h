// Connections to message buses.
#pragma once

#include "tool/bus/bus_library.h"

#include <memory>
#include <string>

namespace tool {

struct CloseBusConnection
{
    void operator()(DBusConnection* connection) const;
};

using BusConnection = std::unique_ptr<DBusConnection, CloseBusConnection>;

// Where the system bus is.
std::string SystemBusAddress();

// Connects to the bus. Null if the address is empty or there is none. Waits for a bus that does not
// answer, up to 25 s.
BusConnection ConnectToBus(const std::string& address);

} // namespace tool
