// The client library of Wayland, loaded on first use: a machine without it has no compositor
// either.
#pragma once

#include <wayland-client-core.h>

namespace tool {

// The functions used, named without "wl_".
struct WaylandLibrary
{
    decltype(&wl_display_cancel_read) displayCancelRead = nullptr;
    decltype(&wl_display_connect_to_fd) displayConnectToFd = nullptr;
    decltype(&wl_display_disconnect) displayDisconnect = nullptr;
    decltype(&wl_display_dispatch_pending) displayDispatchPending = nullptr;
    decltype(&wl_display_flush) displayFlush = nullptr;
    decltype(&wl_display_get_fd) displayGetFd = nullptr;
    decltype(&wl_display_prepare_read) displayPrepareRead = nullptr;
    decltype(&wl_display_read_events) displayReadEvents = nullptr;
    decltype(&wl_log_set_handler_client) logSetHandlerClient = nullptr;
    decltype(&wl_proxy_add_listener) proxyAddListener = nullptr;
    decltype(&wl_proxy_destroy) proxyDestroy = nullptr;
    decltype(&wl_proxy_get_version) proxyGetVersion = nullptr;
    decltype(&wl_proxy_marshal_flags) proxyMarshalFlags = nullptr;
};

// Loads the library on the first call. Returns null if it is missing or lacks a function, as those
// before version 1.20 do.
const WaylandLibrary* Wayland();

} // namespace tool
