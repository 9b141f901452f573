// The protocols' requests and events. The generated functions call those of the library by name;
// here they call the loaded ones. Include this in source files only, after other headers.
#pragma once

#include "tool/screen/wayland/wayland_library.h"

#include <memory>

// NOLINTBEGIN(cppcoreguidelines-macro-usage)
#define wl_proxy_add_listener tool::Wayland()->proxyAddListener
#define wl_proxy_destroy tool::Wayland()->proxyDestroy
#define wl_proxy_get_version tool::Wayland()->proxyGetVersion
#define wl_proxy_marshal_flags tool::Wayland()->proxyMarshalFlags
// NOLINTEND(cppcoreguidelines-macro-usage)

#include "wayland-client-header.h"
#include "wlr-screencopy-unstable-v1-client-header.h"
#include "xdg-output-unstable-v1-client-header.h"
