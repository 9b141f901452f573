#pragma once

#include "tool/bus/bus_library.h"

#include <memory>
#include <string>

namespace tool {

// Where the session bus is: what the environment says, else the socket in the user's runtime
// directory, which is all that is left after pkexec. Empty if there is none.
std::string SessionBusAddress();

struct CloseBusConnection
{
    void operator()(DBusConnection* connection) const;
};

using BusConnection = std::unique_ptr<DBusConnection, CloseBusConnection>;

// Connects to the session bus. Null if there is none. Waits for a bus that does not answer.
BusConnection ConnectToSessionBus();

} // namespace tool
