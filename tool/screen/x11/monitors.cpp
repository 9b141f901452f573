#include "tool/screen/x11/monitors.h"

#include "tool/screen/x11/display.h"
#include "tool/screen/x11/reply.h"

#include <string_view>
#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace tool {
namespace {

// XWayland's monitors are called XWAYLAND0 and so on.
bool IsOfWayland(xcb_connection_t* connection, xcb_atom_t name)
{
    const Owned<xcb_get_atom_name_reply_t> reply(
        xcb_get_atom_name_reply(connection, xcb_get_atom_name(connection, name), nullptr));
    return reply &&
           std::string_view(xcb_get_atom_name_name(reply.get()),
                            static_cast<size_t>(xcb_get_atom_name_name_length(reply.get())))
               .starts_with("XWAYLAND");
}

// Monitors need RandR 1.5. An older server answers the request with an error.
Monitors RandrMonitors(xcb_connection_t* connection, xcb_window_t root)
{
    if (!HasExtension(connection, &xcb_randr_id)) {
        return {};
    }
    const auto versionCookie = xcb_randr_query_version(connection, 1, 5);
    const auto cookie = xcb_randr_get_monitors(connection, root, 1);
    xcb_generic_error_t* error = nullptr;
    const Owned<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(connection, versionCookie, &error));
    const Owned<xcb_generic_error_t> versionError(error);
    error = nullptr;
    const Owned<xcb_randr_get_monitors_reply_t> reply(
        xcb_randr_get_monitors_reply(connection, cookie, &error));
    const Owned<xcb_generic_error_t> monitorError(error);
    if (!reply) {
        return {};
    }
    Monitors monitors;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        const Rectangle area{it.data->x, it.data->y, it.data->width, it.data->height};
        if (area.width > 1 && area.height > 1) {
            monitors.areas.insert(
                it.data->primary != 0 ? monitors.areas.begin() : monitors.areas.end(), area);
            monitors.areOfWayland =
                monitors.areOfWayland ||
                (monitors.areas.size() == 1 && IsOfWayland(connection, it.data->name));
        }
    }
    return monitors;
}

} // namespace

std::optional<Monitors> ReadMonitors(const std::string& display)
{
    const auto opened = OpenDisplay(display);
    if (!opened) {
        return std::nullopt;
    }
    const xcb_screen_t* screen = opened->screen;
    Monitors monitors = RandrMonitors(opened->connection.get(), screen->root);
    if (monitors.areas.empty()) {
        monitors.areas.push_back({0, 0, screen->width_in_pixels, screen->height_in_pixels});
    }
    return monitors;
}

} // namespace tool
