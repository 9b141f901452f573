#include "tool/screen/wayland/wayland_library.h"

#include "tool/system/shared_library.h"

#include <cstdarg>
#include <optional>

namespace tool {
namespace {

// The library would print what a compositor does wrong, and the recorder would show that.
void PrintNothing(const char* /*format*/, va_list /*arguments*/) {}

std::optional<WaylandLibrary> Load()
{
    SharedLibrary symbols("libwayland-client.so.0");
    WaylandLibrary library;
    symbols.Find(library.displayCancelRead, "wl_display_cancel_read");
    symbols.Find(library.displayConnectToFd, "wl_display_connect_to_fd");
    symbols.Find(library.displayDisconnect, "wl_display_disconnect");
    symbols.Find(library.displayDispatchPending, "wl_display_dispatch_pending");
    symbols.Find(library.displayFlush, "wl_display_flush");
    symbols.Find(library.displayGetFd, "wl_display_get_fd");
    symbols.Find(library.displayPrepareRead, "wl_display_prepare_read");
    symbols.Find(library.displayReadEvents, "wl_display_read_events");
    symbols.Find(library.logSetHandlerClient, "wl_log_set_handler_client");
    symbols.Find(library.proxyAddListener, "wl_proxy_add_listener");
    symbols.Find(library.proxyDestroy, "wl_proxy_destroy");
    symbols.Find(library.proxyGetVersion, "wl_proxy_get_version");
    symbols.Find(library.proxyMarshalFlags, "wl_proxy_marshal_flags");
    if (!symbols.IsComplete()) {
        return std::nullopt;
    }
    library.logSetHandlerClient(PrintNothing);
    return library;
}

} // namespace

const WaylandLibrary* Wayland()
{
    static const std::optional<WaylandLibrary> library = Load();
    return library ? &*library : nullptr;
}

} // namespace tool
