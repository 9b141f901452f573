#pragma once

#include "tool/bus/bus_connection.h"

#include <string>

namespace tool {

// Where the session bus is: what the environment says, else the socket in the user's runtime
// directory, which is all that is left after sudo. Empty if there is none.
std::string SessionBusAddress();

// Connects to the session bus, like ConnectToBus().
BusConnection ConnectToSessionBus();

} // namespace tool
