#include "tool/screen/x11/display.h"

namespace tool {

std::optional<Display> OpenDisplay(const std::string& name)
{
    if (name.empty()) {
        return std::nullopt;
    }
    int number = 0;
    Display display;
    display.connection.reset(xcb_connect(name.c_str(), &number));
    if (xcb_connection_has_error(display.connection.get()) != 0) {
        return std::nullopt;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(display.connection.get()));
    for (; number > 0 && screens.rem > 1; --number) {
        xcb_screen_next(&screens);
    }
    if (screens.rem == 0) {
        return std::nullopt;
    }
    display.screen = screens.data;
    return display;
}

bool HasExtension(xcb_connection_t* connection, xcb_extension_t* extension)
{
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, extension);
    return data != nullptr && data->present != 0;
}

} // namespace tool
