// Notifications through the session bus, as org.freedesktop.Notifications describes them.
#include "tool/desktop/notification.h"
#include "tool/system/environment.h"
#include "tool/system/shared_library.h"

#include <cerrno>
#include <csignal>
#include <dbus/dbus.h>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr unsigned longestWait = 5; // seconds

// The functions used, named without "dbus_". The library is loaded when it is needed, because few
// runs of the program need it.
struct BusLibrary
{
    decltype(&dbus_bus_register) busRegister = nullptr;
    decltype(&dbus_connection_open_private) connectionOpenPrivate = nullptr;
    decltype(&dbus_connection_send_with_reply_and_block) send = nullptr;
    decltype(&dbus_message_new_method_call) messageNewMethodCall = nullptr;
    decltype(&dbus_message_iter_init_append) iterInitAppend = nullptr;
    decltype(&dbus_message_iter_append_basic) iterAppendBasic = nullptr;
    decltype(&dbus_message_iter_open_container) iterOpenContainer = nullptr;
    decltype(&dbus_message_iter_close_container) iterCloseContainer = nullptr;
    decltype(&dbus_validate_utf8) validateUtf8 = nullptr;
};

std::optional<BusLibrary> Load()
{
    SharedLibrary symbols("libdbus-1.so.3");
    BusLibrary library;
    symbols.Find(library.busRegister, "dbus_bus_register");
    symbols.Find(library.connectionOpenPrivate, "dbus_connection_open_private");
    symbols.Find(library.send, "dbus_connection_send_with_reply_and_block");
    symbols.Find(library.messageNewMethodCall, "dbus_message_new_method_call");
    symbols.Find(library.iterInitAppend, "dbus_message_iter_init_append");
    symbols.Find(library.iterAppendBasic, "dbus_message_iter_append_basic");
    symbols.Find(library.iterOpenContainer, "dbus_message_iter_open_container");
    symbols.Find(library.iterCloseContainer, "dbus_message_iter_close_container");
    symbols.Find(library.validateUtf8, "dbus_validate_utf8");
    return symbols.IsComplete() ? std::optional(library) : std::nullopt;
}

// The arguments of a method, appended one by one.
class Message
{
public:
    Message(const BusLibrary& library, DBusMessage* message) : m_library(library)
    {
        m_library.iterInitAppend(message, &m_end);
    }
    // The bus closes the connection of a program whose text is not UTF-8, as file names may be.
    void AddText(std::string text)
    {
        text.resize(text.find('\0') == std::string::npos ? text.size() : text.find('\0'));
        if (m_library.validateUtf8(text.c_str(), nullptr) == 0) {
            for (char& byte : text) {
                byte = static_cast<signed char>(byte) < 0 ? '?' : byte;
            }
        }
        const char* start = text.c_str();
        m_library.iterAppendBasic(&m_end, DBUS_TYPE_STRING, &start);
    }
    void AddNumber(int type, dbus_int32_t number)
    {
        m_library.iterAppendBasic(&m_end, type, &number);
    }
    void AddEmptyArray(const char* element)
    {
        DBusMessageIter array;
        m_library.iterOpenContainer(&m_end, DBUS_TYPE_ARRAY, element, &array);
        m_library.iterCloseContainer(&m_end, &array);
    }

private:
    const BusLibrary& m_library;
    DBusMessageIter m_end{};
};

void Send(const std::string& address, const std::string& summary, const std::string& body)
{
    constexpr const char* name = "org.freedesktop.Notifications";
    constexpr const char* path = "/org/freedesktop/Notifications";
    const auto library = Load();
    DBusConnection* const bus =
        library ? library->connectionOpenPrivate(address.c_str(), nullptr) : nullptr;
    if (bus == nullptr || library->busRegister(bus, nullptr) == 0) {
        return;
    }
    DBusMessage* const call = library->messageNewMethodCall(name, path, name, "Notify");
    if (call == nullptr) {
        return;
    }
    Message message(*library, call);
    message.AddText("Lumenfold Screen Recorder");
    message.AddNumber(DBUS_TYPE_UINT32, 0); // replaces no other
    message.AddText("lumenfold-recorder");  // icon
    message.AddText(summary);
    message.AddText(body);
    message.AddEmptyArray("s");             // buttons
    message.AddEmptyArray("{sv}");          // hints
    message.AddNumber(DBUS_TYPE_INT32, -1); // the desktop knows how long to show it
    library->send(bus, call, DBUS_TIMEOUT_INFINITE, nullptr);
}

} // namespace

// The library waits for a bus that does not answer, so it runs in a process with a limited life.
void Notify(const std::string& summary, const std::string& body)
{
    // Without an address the library would start a bus.
    const std::string address = Variable("DBUS_SESSION_BUS_ADDRESS");
    const pid_t child = address.empty() ? -1 : fork();
    if (child == 0) {
        std::signal(SIGALRM, SIG_DFL);
        alarm(longestWait);
        Send(address, summary, body);
        _exit(0);
    }
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

} // namespace tool
