#include "ui/active_window.h"

#include <QGuiApplication>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace {

template <class T>
std::unique_ptr<T, decltype(&std::free)> Own(T* reply)
{
    return {reply, &std::free};
}

xcb_atom_t Atom(xcb_connection_t* server, const char* name)
{
    const auto length = static_cast<uint16_t>(std::strlen(name));
    const auto reply =
        Own(xcb_intern_atom_reply(server, xcb_intern_atom(server, 1, length, name), nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

// As the window manager tells.
xcb_window_t ActiveWindow(xcb_connection_t* server, xcb_window_t root)
{
    const auto cookie = xcb_get_property(server, 0, root, Atom(server, "_NET_ACTIVE_WINDOW"),
                                         XCB_ATOM_WINDOW, 0, 1);
    const auto reply = Own(xcb_get_property_reply(server, cookie, nullptr));
    xcb_window_t window = XCB_WINDOW_NONE;
    if (reply && xcb_get_property_value_length(reply.get()) == sizeof window) {
        std::memcpy(&window, xcb_get_property_value(reply.get()), sizeof window);
    }
    return window;
}

} // namespace

QRect ActiveWindowPlace()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    xcb_connection_t* server = x11 == nullptr ? nullptr : x11->connection();
    if (server == nullptr) {
        return {};
    }
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(server)).data->root;
    const xcb_window_t window = ActiveWindow(server, root);
    const auto size = xcb_get_geometry(server, window);
    const auto place = xcb_translate_coordinates(server, window, root, 0, 0);
    const auto geometry = Own(xcb_get_geometry_reply(server, size, nullptr));
    const auto origin = Own(xcb_translate_coordinates_reply(server, place, nullptr));
    if (!geometry || !origin) { // also if there is no such window any more
        return {};
    }
    return {origin->dst_x, origin->dst_y, geometry->width, geometry->height};
}
