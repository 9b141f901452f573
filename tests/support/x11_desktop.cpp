#include "tests/support/x11_desktop.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace {

template <typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template <typename T>
Reply<T> Own(T* reply)
{
    return Reply<T>(reply, &std::free);
}

} // namespace

X11Desktop::X11Desktop() : m_pConnection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_pConnection) == 0) {
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data->root;
    }
}

X11Desktop::~X11Desktop()
{
    xcb_disconnect(m_pConnection);
}

bool X11Desktop::Good() const
{
    return xcb_connection_has_error(m_pConnection) == 0;
}

uint32_t X11Desktop::Atom(const char* name) const
{
    const auto cookie =
        xcb_intern_atom(m_pConnection, 0, static_cast<uint16_t>(std::strlen(name)), name);
    const auto reply = Own(xcb_intern_atom_reply(m_pConnection, cookie, nullptr));
    return reply ? reply->atom : XCB_NONE;
}

QByteArray X11Desktop::Property(uint32_t window, const char* name) const
{
    const auto cookie =
        xcb_get_property(m_pConnection, 0, window, Atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 1024);
    const auto reply = Own(xcb_get_property_reply(m_pConnection, cookie, nullptr));
    if (!reply) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            xcb_get_property_value_length(reply.get())};
}

bool X11Desktop::HasTray() const
{
    const auto cookie = xcb_get_selection_owner(m_pConnection, Atom("_NET_SYSTEM_TRAY_S0"));
    const auto reply = Own(xcb_get_selection_owner_reply(m_pConnection, cookie, nullptr));
    return reply && reply->owner != XCB_NONE;
}

void X11Desktop::AddTree(QList<DesktopWindow>& windows, uint32_t window, uint32_t parent) const
{
    const auto attributes = Own(xcb_get_window_attributes_reply(
        m_pConnection, xcb_get_window_attributes(m_pConnection, window), nullptr));
    const auto geometry = Own(
        xcb_get_geometry_reply(m_pConnection, xcb_get_geometry(m_pConnection, window), nullptr));
    const auto place = Own(xcb_translate_coordinates_reply(
        m_pConnection, xcb_translate_coordinates(m_pConnection, window, m_root, 0, 0), nullptr));
    const auto tree =
        Own(xcb_query_tree_reply(m_pConnection, xcb_query_tree(m_pConnection, window), nullptr));
    if (!attributes || !geometry || !place || !tree) {
        return; // already gone
    }
    QByteArray title = Property(window, "_NET_WM_NAME");
    if (title.isEmpty()) {
        title = Property(window, "WM_NAME");
    }
    windows.append({window, parent, QString::fromUtf8(title),
                    QString::fromUtf8(Property(window, "WM_CLASS").split('\0').value(0)),
                    QRect(place->dst_x, place->dst_y, geometry->width, geometry->height),
                    attributes->map_state == XCB_MAP_STATE_VIEWABLE,
                    attributes->override_redirect == 0});
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        AddTree(windows, children[i], window);
    }
}

QList<DesktopWindow> X11Desktop::Windows() const
{
    QList<DesktopWindow> windows;
    AddTree(windows, m_root, XCB_NONE);
    return windows;
}

bool X11Desktop::HasAtom(uint32_t window, const char* property, const char* name) const
{
    const QByteArray values = Property(window, property);
    const uint32_t wanted = Atom(name);
    for (qsizetype i = 0; i + 4 <= values.size(); i += 4) {
        uint32_t value = 0;
        std::memcpy(&value, values.constData() + i, sizeof value);
        if (value == wanted) {
            return true;
        }
    }
    return false;
}

bool X11Desktop::IsMinimised(uint32_t window) const
{
    return HasAtom(window, "_NET_WM_STATE", "_NET_WM_STATE_HIDDEN");
}

bool X11Desktop::IsTooltip(uint32_t window) const
{
    return HasAtom(window, "_NET_WM_WINDOW_TYPE", "_NET_WM_WINDOW_TYPE_TOOLTIP");
}

void X11Desktop::AskWindowManager(uint32_t window, const char* message, uint32_t first)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = Atom(message);
    event.data.data32[0] = first;
    event.data.data32[1] = 2; // source indication "pager"; for closing it comes second
    xcb_send_event(m_pConnection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event)); // NOLINT: the interface's own way
    xcb_flush(m_pConnection);
}

void X11Desktop::Close(uint32_t window)
{
    AskWindowManager(window, "_NET_CLOSE_WINDOW", XCB_CURRENT_TIME);
}

void X11Desktop::Activate(uint32_t window)
{
    AskWindowManager(window, "_NET_ACTIVE_WINDOW", 2);
}

void X11Desktop::Click(QPoint place, int button, int times)
{
    RunProgram("xdotool", {"mousemove", "--sync", QString::number(place.x()),
                           QString::number(place.y()), "click", "--repeat", QString::number(times),
                           "--delay", "20", QString::number(button)});
}

void X11Desktop::Press(const QStringList& keys)
{
    RunProgram("xdotool", QStringList{"key", "--delay", "30"} + keys);
}

void X11Desktop::Type(const QString& text)
{
    RunProgram("xdotool", {"type", "--delay", "5", text});
}

void X11Desktop::Screenshot(const QString& file) const
{
    RunProgram("ffmpeg", {"-v", "error", "-y", "-f", "x11grab", "-draw_mouse", "1", "-i",
                          qEnvironmentVariable("DISPLAY"), "-frames:v", "1", file});
}
