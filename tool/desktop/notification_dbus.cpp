// Notifications through the session bus, as org.freedesktop.Notifications describes them.
#include "tool/bus/bus_message.h"
#include "tool/bus/session_bus.h"
#include "tool/bus/session_user.h"
#include "tool/desktop/notification.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr unsigned longestWait = 5; // seconds

void Send(const std::string& summary, const std::string& body)
{
    constexpr const char* name = "org.freedesktop.Notifications";
    constexpr const char* path = "/org/freedesktop/Notifications";
    const BusConnection bus = ConnectToSessionBus();
    const BusMessage call(bus ? Bus()->messageNewMethodCall(name, path, name, "Notify") : nullptr);
    if (!call) {
        return;
    }
    BusArguments arguments(call.get());
    arguments.AddText("Lumenfold Screen Recorder");
    arguments.AddNumber(DBUS_TYPE_UINT32, 0); // replaces no other
    arguments.AddText("lumenfold-recorder");  // icon
    arguments.AddText(summary);
    arguments.AddText(body);
    arguments.AddEmptyArray("s");                         // buttons
    arguments.AddEmptyArray("{sv}");                      // hints
    constexpr auto usualTime = static_cast<uint32_t>(-1); // the desktop knows how long to show it
    arguments.AddNumber(DBUS_TYPE_INT32, usualTime);
    Bus()->connectionSendAndWait(bus.get(), call.get(), DBUS_TIMEOUT_INFINITE, nullptr);
}

} // namespace

// The library waits for a bus that does not answer, so it runs in a process with a limited life.
void Notify(const std::string& summary, const std::string& body)
{
    const pid_t child = SessionBusAddress().empty() ? -1 : fork();
    if (child == 0) {
        std::signal(SIGALRM, SIG_DFL);
        alarm(longestWait);
        if (BecomeSessionUser()) {
            Send(summary, body);
        }
        _exit(0);
    }
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace tool
