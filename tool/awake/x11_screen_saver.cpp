#include "tool/awake/x11_screen_saver.h"

#include "tool/screen/x11/display.h"
#include "tool/screen/x11/reply.h"
#include "tool/system/environment.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>
#include <xcb/screensaver.h>

namespace tool {
namespace {

// Shorter than any time after which somebody would want a screen to go dark.
constexpr std::chrono::seconds interval{10};

// A connection to the server that holds off its screen saver as long as it exists.
class Suspension
{
public:
    explicit Suspension(Display display);

    // Counts as input by the user. Returns false when the server is gone.
    bool Renew();

private:
    enum Atom { Status, Version, Message, Deactivate, Count };

    xcb_get_property_cookie_t Ask(xcb_window_t window, Atom property) const;
    Owned<xcb_get_property_reply_t> Property(xcb_get_property_cookie_t cookie) const;
    bool IsXscreensaverAtRest() const;
    void DeactivateXscreensaver() const;

    Display m_display;
    xcb_connection_t* m_pConnection;
    std::array<xcb_atom_t, Count> m_atoms{};
};

Suspension::Suspension(Display display)
    : m_display(std::move(display)),
      m_pConnection(m_display.connection.get())
{
    constexpr std::array<std::string_view, Count> names{
        "_SCREENSAVER_STATUS", "_SCREENSAVER_VERSION", "SCREENSAVER", "DEACTIVATE"};
    if (HasExtension(m_pConnection, &xcb_screensaver_id)) {
        xcb_screensaver_suspend(m_pConnection, 1);
    }
    for (size_t i = 0; i < names.size(); ++i) {
        const auto cookie = xcb_intern_atom(
            m_pConnection, 0, static_cast<uint16_t>(names[i].size()), names[i].data());
        const Owned<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_pConnection, cookie, nullptr));
        if (reply) {
            m_atoms[i] = reply->atom;
        }
    }
}

xcb_get_property_cookie_t Suspension::Ask(xcb_window_t window, Atom property) const
{
    return xcb_get_property(m_pConnection, 0, window, m_atoms[property], XCB_GET_PROPERTY_TYPE_ANY,
                            0, 1);
}

// Null if there is none.
Owned<xcb_get_property_reply_t> Suspension::Property(xcb_get_property_cookie_t cookie) const
{
    Owned<xcb_get_property_reply_t> reply(xcb_get_property_reply(m_pConnection, cookie, nullptr));
    return reply && reply->type != XCB_ATOM_NONE ? std::move(reply) : nullptr;
}

// Whether it runs, and has neither blanked nor locked the screen: it would ask for the password
// now.
bool Suspension::IsXscreensaverAtRest() const
{
    const auto status = Property(Ask(m_display.screen->root, Status));
    return status && status->format == 32 && xcb_get_property_value_length(status.get()) >= 4 &&
           *static_cast<const uint32_t*>(xcb_get_property_value(status.get())) == 0;
}

// It keeps time by itself and listens to nothing else, except the session bus where there is one.
void Suspension::DeactivateXscreensaver() const
{
    const auto cookie = xcb_query_tree(m_pConnection, m_display.screen->root);
    const Owned<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(m_pConnection, cookie, nullptr));
    if (!tree) {
        return;
    }
    const xcb_window_t* windows = xcb_query_tree_children(tree.get());
    const auto count = static_cast<size_t>(xcb_query_tree_children_length(tree.get()));
    std::vector<std::pair<xcb_window_t, xcb_get_property_cookie_t>> asked(count);
    for (size_t i = 0; i < count; ++i) {
        asked[i] = {windows[i], Ask(windows[i], Version)};
    }
    for (const auto& [window, version] : asked) {
        if (Property(version)) {
            xcb_client_message_event_t event{};
            event.response_type = XCB_CLIENT_MESSAGE;
            event.format = 32;
            event.window = window;
            event.type = m_atoms[Message];
            event.data.data32[0] = m_atoms[Deactivate];
            xcb_send_event(m_pConnection, 0, window, XCB_EVENT_MASK_NO_EVENT,
                           reinterpret_cast<const char*>(&event));
        }
    }
}

bool Suspension::Renew()
{
    xcb_force_screen_saver(m_pConnection, XCB_SCREEN_SAVER_RESET);
    if (IsXscreensaverAtRest()) {
        DeactivateXscreensaver();
    }
    xcb_flush(m_pConnection);
    while (const Owned<xcb_generic_event_t> error{xcb_poll_for_event(m_pConnection)}) {
    }
    return xcb_connection_has_error(m_pConnection) == 0;
}

} // namespace

void HoldX11ScreenSaver()
{
    auto display = OpenDisplay(Variable("DISPLAY"));
    if (!display) {
        return;
    }
    Suspension suspension(*std::move(display));
    while (suspension.Renew()) {
        std::this_thread::sleep_for(interval);
    }
}

} // namespace tool
