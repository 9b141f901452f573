// A connection to an X server.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <xcb/xcb.h>

namespace tool {

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct Display
{
    std::unique_ptr<xcb_connection_t, Disconnect> connection;
    const xcb_screen_t* screen = nullptr; // the display's default one; belongs to the connection
};

// `name` is that of the environment variable DISPLAY. Returns nothing if it is empty or the display
// cannot be opened.
std::optional<Display> OpenDisplay(const std::string& name);

bool HasExtension(xcb_connection_t* connection, xcb_extension_t* extension);

} // namespace tool
