#include "tool/awake/session_services.h"

#include "tool/awake/inhibit_call.h"
#include "tool/bus/bus_values.h"
#include "tool/bus/session_bus.h"
#include "tool/bus/session_user.h"

#include <array>
#include <optional>
#include <string>

namespace tool {
namespace {

constexpr std::array services{
    // KDE, GNOME, xscreensaver and several idle watchers
    BusObject{"org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
              "org.freedesktop.ScreenSaver"},
    // KDE and Xfce, against standby too
    BusObject{"org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
              "org.freedesktop.PowerManagement.Inhibit"},
    // GNOME, MATE and Cinnamon
    BusObject{"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager"},
};

// The service releases its lock when our connection ends, so its answer does not matter.
void Ask(DBusConnection* bus, const BusObject& object)
{
    constexpr uint32_t noWindow = 0;
    constexpr uint32_t idle = 8;
    const BusMessage call = InhibitCall(object);
    if (!call) {
        return;
    }
    const bool isSessionManager = &object == &services.back();
    BusArguments arguments(call.get());
    arguments.AddText(inhibitingProgram);
    if (isSessionManager) {
        arguments.AddNumber(DBUS_TYPE_UINT32, noWindow);
    }
    arguments.AddText(inhibitReason);
    if (isSessionManager) {
        arguments.AddNumber(DBUS_TYPE_UINT32, idle);
    }
    Bus()->messageSetNoReply(call.get(), 1);
    Bus()->connectionSend(bus, call.get(), nullptr);
}

void Watch(DBusConnection* bus, const BusObject& object)
{
    const std::string rule = std::string("type='signal',sender='org.freedesktop.DBus',"
                                         "member='NameOwnerChanged',arg0='") +
                             object.service + "'";
    Bus()->busAddMatch(bus, rule.c_str(), nullptr); // without an error to fill it does not wait
}

// The service that has started or restarted, or nothing.
std::optional<std::string> StartedService(DBusMessage* message)
{
    if (Bus()->messageIsSignal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") == 0) {
        return std::nullopt;
    }
    BusValues values(message);
    const auto service = values.Text();
    values.Next(); // the old owner
    values.Next();
    const auto owner = values.Text();
    return owner && !owner->empty() ? service : std::nullopt;
}

} // namespace

void HoldSessionServices()
{
    const BusConnection bus = ActAsSessionUser() ? ConnectToSessionBus() : nullptr;
    if (!bus) {
        return;
    }
    for (const BusObject& object : services) {
        Watch(bus.get(), object);
        Ask(bus.get(), object);
    }
    while (Bus()->connectionReadWrite(bus.get(), -1) != 0) {
        while (const BusMessage message{Bus()->connectionPopMessage(bus.get())}) {
            const auto started = StartedService(message.get());
            for (const BusObject& object : services) {
                if (started == object.service) {
                    Ask(bus.get(), object);
                }
            }
        }
    }
}

} // namespace tool
