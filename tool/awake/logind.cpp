#include "tool/awake/logind.h"

#include "tool/awake/inhibit_call.h"
#include "tool/bus/bus_values.h"
#include "tool/bus/session_bus.h"

namespace tool {

void HoldLogind()
{
    constexpr BusObject logind{"org.freedesktop.login1", "/org/freedesktop/login1",
                               "org.freedesktop.login1.Manager"};
    const BusConnection bus = ConnectToBus(SystemBusAddress());
    const BusMessage call = bus ? InhibitCall(logind) : nullptr;
    if (!call) {
        return;
    }
    BusArguments arguments(call.get());
    arguments.AddText("idle");
    arguments.AddText(inhibitingProgram);
    arguments.AddText(inhibitReason);
    arguments.AddText("block");
    const BusMessage answer(
        Bus()->connectionSendAndWait(bus.get(), call.get(), DBUS_TIMEOUT_INFINITE, nullptr));
    // The lock lives as long as this descriptor: until the process ends.
    static const Descriptor lock = BusValues(answer.get()).OpenFile();
}

} // namespace tool
