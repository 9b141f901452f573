// A ScreenCast portal that can do what real ones do rarely or never.
//
//   fake_portal LOG FAULT...
//
// Takes the portal's name on the session bus, prints "ready", and behaves well except for the
// faults. LOG gets a line for each option that a session was asked for.
#include "tests/support/bus_dictionary.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <dbus/dbus.h>
#include <fstream>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr const char* portalName = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* token = "934750eb-68f0-448d-8930-34377bab5b3e";

class FakePortal
{
public:
    FakePortal(const char* log, std::vector<std::string> faults)
        : m_log(log),
          m_faults(std::move(faults)),
          m_bus(dbus_bus_get_private(DBUS_BUS_SESSION, nullptr))
    {
    }

    bool TakeName()
    {
        return m_bus != nullptr && dbus_bus_request_name(m_bus, portalName, 0, nullptr) ==
                                       DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER;
    }

    void Work()
    {
        while (dbus_connection_read_write(m_bus, -1) != 0) {
            while (DBusMessage* call = dbus_connection_pop_message(m_bus)) {
                if (dbus_message_get_type(call) == DBUS_MESSAGE_TYPE_METHOD_CALL) {
                    Answer(call, dbus_message_get_member(call));
                }
                dbus_message_unref(call);
            }
        }
    }

private:
    bool Has(const std::string& fault) const
    {
        return std::ranges::find(m_faults, fault) != m_faults.end();
    }

    void Answer(DBusMessage* call, const std::string& method);
    void AnswerProperties(DBusMessage* call);
    void AnswerRequest(DBusMessage* call, const std::string& method);
    void AnswerOpen(DBusMessage* call);
    std::string ReadOptions(DBusMessage* call);
    void SendResponse(DBusConnection* bus, DBusMessage* call, const std::string& request,
                      const std::string& method, dbus_uint32_t code);
    void SendStrangersResponse(DBusMessage* call, const std::string& request);
    void Close();
    void Send(DBusConnection* bus, DBusMessage* message)
    {
        dbus_connection_send(bus, message, nullptr);
        dbus_connection_flush(bus);
        dbus_message_unref(message);
    }

    std::ofstream m_log;
    std::vector<std::string> m_faults;
    DBusConnection* m_bus;
    std::string m_session;
    std::string m_caller;
};

void FakePortal::Answer(DBusMessage* call, const std::string& method)
{
    m_caller = dbus_message_get_sender(call);
    if (method == "GetAll") {
        AnswerProperties(call);
    } else if (Has("refuses " + method)) {
        Send(m_bus, dbus_message_new_error(call, "org.freedesktop.DBus.Error.Failed",
                                           "not today:\nreally\x1b[31m not"));
    } else if (method == "OpenPipeWireRemote") {
        AnswerOpen(call);
    } else {
        AnswerRequest(call, method);
    }
}

void FakePortal::AnswerProperties(DBusMessage* call)
{
    DBusMessage* reply = dbus_message_new_method_return(call);
    {
        Dictionary properties(reply);
        properties.Add("version", Has("old") ? 3U : 4U);
        properties.Add("AvailableCursorModes", Has("old") ? 1U : 7U);
        properties.Add("AvailableSourceTypes", Has("has no monitors") ? 2U : 3U);
    }
    Send(m_bus, reply);
}

// Logs the options. Returns the handle token.
std::string FakePortal::ReadOptions(DBusMessage* call)
{
    DBusMessageIter arguments;
    DBusMessageIter entries;
    std::string handle;
    dbus_message_iter_init(call, &arguments);
    while (dbus_message_iter_get_arg_type(&arguments) != DBUS_TYPE_ARRAY) {
        dbus_message_iter_next(&arguments);
    }
    dbus_message_iter_recurse(&arguments, &entries);
    for (; dbus_message_iter_get_arg_type(&entries) != DBUS_TYPE_INVALID;
         dbus_message_iter_next(&entries)) {
        DBusMessageIter entry;
        DBusMessageIter value;
        const char* name = nullptr;
        dbus_message_iter_recurse(&entries, &entry);
        dbus_message_iter_get_basic(&entry, &name);
        dbus_message_iter_next(&entry);
        dbus_message_iter_recurse(&entry, &value);
        DBusBasicValue basic{};
        dbus_message_iter_get_basic(&value, &basic);
        const bool isText = dbus_message_iter_get_arg_type(&value) == DBUS_TYPE_STRING;
        const std::string text = isText ? basic.str : std::to_string(basic.u32);
        m_log << name << '=' << text << std::endl;
        handle = std::string(name) == "handle_token" ? text : handle;
        m_session = std::string(name) == "session_handle_token"
                        ? std::string(portalPath) + "/session/1/" + text
                        : m_session;
    }
    return handle;
}

void FakePortal::AnswerRequest(DBusMessage* call, const std::string& method)
{
    std::string name = m_caller.substr(1);
    std::ranges::replace(name, '.', '_');
    const std::string handle = ReadOptions(call);
    const std::string request =
        std::string(portalPath) + "/request/" + (Has("old") ? "t/1" : name + "/" + handle);
    const bool asks = method == "Start";
    if (Has("answers early")) {
        SendResponse(m_bus, call, request, method, 0);
    }
    DBusMessage* reply = dbus_message_new_method_return(call);
    const char* path = request.c_str();
    dbus_message_append_args(reply, DBUS_TYPE_OBJECT_PATH, &path, DBUS_TYPE_INVALID);
    Send(m_bus, reply);
    if (asks && Has("is lied about")) {
        SendStrangersResponse(call, request);
    }
    if (asks && Has("is asked slowly")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    }
    if (asks && Has("ends")) {
        std::exit(0);
    }
    if (asks && Has("closes at once")) {
        Close();
    }
    if (!Has("answers early") && !(asks && (Has("never answers") || Has("closes at once")))) {
        SendResponse(m_bus, call, request, method,
                     asks && Has("declines")   ? 1
                     : asks && Has("gives up") ? 2
                                               : 0);
    }
}

void FakePortal::SendResponse(DBusConnection* bus, DBusMessage* call, const std::string& request,
                              const std::string& method, dbus_uint32_t code)
{
    DBusMessage* signal =
        dbus_message_new_signal(request.c_str(), "org.freedesktop.portal.Request", "Response");
    dbus_message_set_destination(signal, dbus_message_get_sender(call));
    if (Has("says nothing")) {
        Send(bus, signal);
        return;
    }
    dbus_message_append_args(signal, DBUS_TYPE_UINT32, &code, DBUS_TYPE_INVALID);
    const bool confused = Has("confuses " + method);
    {
        Dictionary results(signal);
        if (method == "CreateSession" && confused) {
            results.Add("session_handle", "not a path");
        } else if (method == "CreateSession") {
            results.Add("session_handle", m_session.c_str());
        } else if (method == "Start" && confused) {
            results.Add("streams", "none");
            results.Add("restore_token", 7U);
        } else if (method == "Start" && !Has("has no streams")) {
            results.Add("restore_token", Has("gives a bad token") ? "/etc/passwd" : token);
            results.AddStream(42);
        }
    }
    Send(bus, signal);
}

// Somebody else says that the person has declined.
void FakePortal::SendStrangersResponse(DBusMessage* call, const std::string& request)
{
    DBusConnection* stranger = dbus_bus_get_private(DBUS_BUS_SESSION, nullptr);
    SendResponse(stranger, call, request, "Start", 1);
}

void FakePortal::AnswerOpen(DBusMessage* call)
{
    DBusMessage* reply = dbus_message_new_method_return(call);
    int ends[2] = {-1, -1}; // nobody is at the other end
    if (!Has("gives no access") && socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0) {
        dbus_message_append_args(reply, DBUS_TYPE_UNIX_FD, &ends[0], DBUS_TYPE_INVALID);
        close(ends[0]);
    }
    Send(m_bus, reply);
    if (Has("closes later")) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        Close();
    }
}

void FakePortal::Close()
{
    DBusMessage* signal =
        dbus_message_new_signal(m_session.c_str(), "org.freedesktop.portal.Session", "Closed");
    dbus_message_set_destination(signal, m_caller.c_str());
    Send(m_bus, signal);
}

} // namespace

int main(int count, char** values)
{
    FakePortal portal(values[1], {values + std::min(count, 2), values + count});
    if (!portal.TakeName()) {
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    portal.Work();
    return 0;
}
