#include "tool/screen/x11/monitors.h"

#include "tool/screen/x11/owned_reply.h"
#include "tool/system/environment.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>

namespace tool {
namespace {

const xcb_screen_t* DefaultScreen(xcb_connection_t* connection, int number)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screens.rem > 1; --number) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

// Monitors need RandR 1.5. An older server answers the request with an error.
std::vector<Rectangle> RandrMonitors(xcb_connection_t* connection, xcb_window_t root)
{
    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(connection, &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) {
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
    std::vector<Rectangle> monitors;
    for (auto it = xcb_randr_get_monitors_monitors_iterator(reply.get()); it.rem > 0;
         xcb_randr_monitor_info_next(&it)) {
        const Rectangle area{it.data->x, it.data->y, it.data->width, it.data->height};
        if (area.width > 1 && area.height > 1) {
            monitors.insert(it.data->primary != 0 ? monitors.begin() : monitors.end(), area);
        }
    }
    return monitors;
}

} // namespace

std::optional<std::vector<Rectangle>> ReadMonitors(const std::string& display)
{
    if (display.empty()) {
        return std::nullopt;
    }
    int number = 0;
    const std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection(
        xcb_connect(display.c_str(), &number), &xcb_disconnect);
    if (xcb_connection_has_error(connection.get()) != 0) {
        return std::nullopt;
    }
    const xcb_screen_t* screen = DefaultScreen(connection.get(), number);
    if (screen == nullptr) {
        return std::nullopt;
    }
    std::vector<Rectangle> monitors = RandrMonitors(connection.get(), screen->root);
    if (monitors.empty()) {
        monitors.push_back({0, 0, screen->width_in_pixels, screen->height_in_pixels});
    }
    return monitors;
}

std::string NoScreenReason()
{
    const std::string display = Variable("DISPLAY");
    std::string reason = display.empty() ? "No screen can be recorded: DISPLAY is not set"
                                         : "No screen can be recorded: the X display " + display +
                                               " cannot be opened";
    if (!Variable("WAYLAND_DISPLAY").empty()) {
        reason += "; a Wayland session without X gives programs no access to the screen";
    }
    return reason;
}

} // namespace tool
