// A screen cast session of the desktop's portal, as org.freedesktop.portal.ScreenCast describes it.
// Every function waits for answers, that of Open() for a person's.
#pragma once

#include "tool/bus/bus_message.h"
#include "tool/bus/session_bus.h"
#include "tool/screen/portal/portal_answers.h"
#include "tool/system/descriptor.h"

#include <functional>
#include <optional>
#include <string>

namespace tool {

struct PortalStream
{
    Descriptor pipewire; // a connection that sees this stream alone
    uint32_t node = 0;
};

class PortalConversation
{
public:
    // Asks for a monitor. `token`: the restore token of an earlier session, or empty. Returns
    // nothing if there is none, and why in Reason().
    std::optional<PortalStream> Open(const std::string& token);

    // For the next session: empty if the permission is for this one only.
    const std::string& Token() const { return m_token; }
    // A sentence without its full stop.
    const std::string& Reason() const { return m_reason; }

    // Returns when the user or the desktop has ended the session.
    void WaitForEnd();

private:
    enum class Answers { AtOnce, WhenAPersonDoes };
    using Fill = std::function<void(BusArguments& arguments)>;

    bool Connect();
    bool CreateSession();
    bool SelectSources(const std::string& token);
    std::optional<uint32_t> Start();
    Descriptor OpenPipeWire();

    BusMessage Call(const char* interface, const char* method, const Fill& fill);
    std::optional<PortalResponse> Ask(const char* method, const Fill& fill, Answers answers);
    BusMessage NextMessage(Answers answers);
    bool IsSignal(DBusMessage* message, const char* interface, const char* member) const;
    bool IsEnd(DBusMessage* message) const;

    BusConnection m_bus;
    PortalProperties m_properties;
    std::string m_portal; // its unique name on the bus
    std::string m_session;
    std::string m_token;
    std::string m_reason;
    int m_nRequests = 0;
};

} // namespace tool
