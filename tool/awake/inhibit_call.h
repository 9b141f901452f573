#pragma once

#include "tool/bus/bus_message.h"

namespace tool {

// An object of a service and one of its interfaces.
struct BusObject
{
    const char* service;
    const char* path;
    const char* interface;
};

// What desktops show as the holder of a lock.
constexpr auto inhibitingProgram = "Lumenfold Screen Recorder";
constexpr auto inhibitReason = "Recording the screen";

// A call of the object's method "Inhibit", still without arguments, which starts no service. Null
// if there is no memory.
BusMessage InhibitCall(const BusObject& object);

} // namespace tool
