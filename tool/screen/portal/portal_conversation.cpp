#include "tool/screen/portal/portal_conversation.h"

#include "tool/bus/bus_values.h"

#include <chrono>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* screenCast = "org.freedesktop.portal.ScreenCast";
constexpr const char* request = "org.freedesktop.portal.Request";
constexpr const char* session = "org.freedesktop.portal.Session";

// For what no person has to answer: the bus may have to start the portal first.
constexpr std::chrono::milliseconds patience{30000};

constexpr uint32_t monitors = 1;
constexpr uint32_t pointerInPicture = 2;
constexpr uint32_t untilRevoked = 2;
constexpr uint32_t firstVersionWithTokens = 4;

std::string SignalsOf(const char* interface, const char* member)
{
    return std::string("type='signal',sender='") + portalName + "',interface='" + interface +
           "',member='" + member + "'";
}

std::string Printable(std::string text)
{
    for (char& letter : text) {
        letter = static_cast<unsigned char>(letter) < ' ' ? ' ' : letter;
    }
    return text;
}

std::string Path(DBusMessage* message)
{
    const char* path = Bus()->messageGetPath(message);
    return path == nullptr ? std::string() : path;
}

} // namespace

std::optional<PortalStream> PortalConversation::Open(const std::string& token)
{
    if (!Connect() || !CreateSession() || !SelectSources(token)) {
        return std::nullopt;
    }
    const auto node = Start();
    if (!node) {
        return std::nullopt;
    }
    Descriptor pipewire = OpenPipeWire();
    if (!pipewire.IsOpen()) {
        return std::nullopt;
    }
    return PortalStream{std::move(pipewire), *node};
}

bool PortalConversation::Connect()
{
    m_bus = ConnectToSessionBus();
    if (!m_bus) {
        m_reason = "No screen can be recorded: there is no session bus to ask the desktop on";
        return false;
    }
    // Before the first request, so that no answer comes too early.
    Bus()->busAddMatch(m_bus.get(), SignalsOf(request, "Response").c_str(), nullptr);
    Bus()->busAddMatch(m_bus.get(), SignalsOf(session, "Closed").c_str(), nullptr);
    const std::string end = std::string("type='signal',sender='") + DBUS_SERVICE_DBUS +
                            "',member='NameOwnerChanged',arg0='" + portalName + "'";
    Bus()->busAddMatch(m_bus.get(), end.c_str(), nullptr);

    const BusMessage reply = Call(DBUS_INTERFACE_PROPERTIES, "GetAll",
                                  [](BusArguments& arguments) { arguments.AddText(screenCast); });
    if (!reply) {
        return false;
    }
    const char* sender = Bus()->messageGetSender(reply.get());
    m_portal = sender == nullptr ? "" : sender;
    m_properties = ReadProperties(reply.get());
    if ((m_properties.sourceTypes & monitors) == 0) {
        m_reason = "No screen can be recorded: the desktop's portal offers none";
        return false;
    }
    return true;
}

bool PortalConversation::CreateSession()
{
    const auto response = Ask(
        "CreateSession",
        [](BusArguments& arguments) {
            arguments.OpenOptions();
            arguments.AddOption("session_handle_token", "lumenfold");
        },
        Answers::AtOnce);
    if (response && response->session.empty()) {
        m_reason = "No screen can be recorded: the desktop's portal has begun no session";
    }
    m_session = response ? response->session : std::string();
    return !m_session.empty();
}

bool PortalConversation::SelectSources(const std::string& token)
{
    const auto fill = [&](BusArguments& arguments) {
        arguments.AddPath(m_session);
        arguments.OpenOptions();
        arguments.AddOption("types", DBUS_TYPE_UINT32, monitors);
        arguments.AddOption("multiple", DBUS_TYPE_BOOLEAN, 0);
        if ((m_properties.cursorModes & pointerInPicture) != 0) {
            arguments.AddOption("cursor_mode", DBUS_TYPE_UINT32, pointerInPicture);
        }
        if (m_properties.version >= firstVersionWithTokens) {
            arguments.AddOption("persist_mode", DBUS_TYPE_UINT32, untilRevoked);
            if (!token.empty()) {
                arguments.AddOption("restore_token", token);
            }
        }
    };
    // Some portals show their dialog already here.
    return Ask("SelectSources", fill, Answers::WhenAPersonDoes).has_value();
}

std::optional<uint32_t> PortalConversation::Start()
{
    const auto response = Ask(
        "Start",
        [&](BusArguments& arguments) {
            arguments.AddPath(m_session);
            arguments.AddText(""); // our window is not known here
            arguments.OpenOptions();
        },
        Answers::WhenAPersonDoes);
    if (!response) {
        return std::nullopt;
    }
    m_token = response->token;
    if (!response->node) {
        m_reason = "No screen can be recorded: the desktop's portal gives no stream";
    }
    return response->node;
}

Descriptor PortalConversation::OpenPipeWire()
{
    const BusMessage reply = Call(screenCast, "OpenPipeWireRemote", [&](BusArguments& arguments) {
        arguments.AddPath(m_session);
        arguments.AddEmptyArray("{sv}");
    });
    Descriptor pipewire = reply ? BusValues(reply.get()).OpenFile() : Descriptor();
    if (reply && !pipewire.IsOpen()) {
        m_reason = "No screen can be recorded: the desktop's portal gives no access to PipeWire";
    }
    return pipewire;
}

// Returns null, and sets the reason, if there is no reply.
BusMessage PortalConversation::Call(const char* interface, const char* method, const Fill& fill)
{
    const BusMessage call(Bus()->messageNewMethodCall(portalName, portalPath, interface, method));
    BusArguments arguments(call.get());
    fill(arguments);
    DBusError error;
    Bus()->errorInit(&error);
    BusMessage reply(Bus()->connectionSendAndWait(m_bus.get(), call.get(),
                                                  static_cast<int>(patience.count()), &error));
    if (!reply) {
        m_reason = "No screen can be recorded: the desktop's portal refuses (" +
                   std::string(method) + ": " +
                   Printable(error.message == nullptr ? "" : error.message) + ")";
        Bus()->errorFree(&error);
    }
    return reply;
}

// Calls a method whose answer is a signal of the object that the method returns. Returns nothing,
// and sets the reason, unless the answer is yes.
std::optional<PortalResponse> PortalConversation::Ask(const char* method, const Fill& fill,
                                                      Answers answers)
{
    const BusMessage reply = Call(screenCast, method, [&](BusArguments& arguments) {
        fill(arguments);
        arguments.AddOption("handle_token", "lumenfold" + std::to_string(++m_nRequests));
        arguments.CloseOptions();
    });
    if (!reply) {
        return std::nullopt;
    }
    const std::string handle = ReadHandle(reply.get());
    while (const BusMessage signal = NextMessage(answers)) {
        if (IsSignal(signal.get(), request, "Response") && Path(signal.get()) == handle) {
            const PortalResponse response = ReadResponse(signal.get());
            if (response.code != PortalResponse::done) {
                m_reason =
                    response.code == PortalResponse::declined
                        ? "Recording the screen was declined in the desktop's dialog"
                        : "No screen can be recorded: the desktop's portal gives no permission";
                return std::nullopt;
            }
            return response;
        }
        if (IsEnd(signal.get())) {
            break;
        }
    }
    m_reason = std::string("No screen can be recorded: the desktop's portal does not answer (") +
               method + ")";
    return std::nullopt;
}

void PortalConversation::WaitForEnd()
{
    while (const BusMessage signal = NextMessage(Answers::WhenAPersonDoes)) {
        if (IsSignal(signal.get(), session, "Closed") && Path(signal.get()) == m_session) {
            return;
        }
    }
    // Without a bus nobody says when it ends, but the stream may still flow.
    while (true) {
        pause();
    }
}

// Returns null if there is none in time, or no bus any more.
BusMessage PortalConversation::NextMessage(Answers answers)
{
    const auto end = Clock::now() + patience;
    BusMessage message(Bus()->connectionPopMessage(m_bus.get()));
    while (!message) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        const bool atOnce = answers == Answers::AtOnce;
        if ((atOnce && left.count() <= 0) ||
            Bus()->connectionReadWrite(m_bus.get(), atOnce ? static_cast<int>(left.count()) : -1) ==
                0) {
            break;
        }
        message.reset(Bus()->connectionPopMessage(m_bus.get()));
    }
    return message;
}

// Whether the portal itself has sent it: everybody on the bus can send us signals.
bool PortalConversation::IsSignal(DBusMessage* message, const char* interface,
                                  const char* member) const
{
    const char* sender = Bus()->messageGetSender(message);
    return sender != nullptr && sender == m_portal &&
           Bus()->messageIsSignal(message, interface, member) != 0;
}

// Whether nobody will answer any more.
bool PortalConversation::IsEnd(DBusMessage* message) const
{
    if (IsSignal(message, session, "Closed")) {
        return Path(message) == m_session;
    }
    const char* sender = Bus()->messageGetSender(message);
    if (sender == nullptr || std::string(sender) != DBUS_SERVICE_DBUS ||
        Bus()->messageIsSignal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged") == 0) {
        return false;
    }
    BusValues values(message);
    const bool isPortal = values.Text() == portalName;
    values.Next();
    return isPortal && values.Text() == m_portal;
}

} // namespace tool
