// The descriptions of the protocols' messages. Those of the core are in the library too, but that
// is only loaded where there is a compositor. As C++ they need the declarations first.
#include "wayland-client-header.h"
#include "wlr-screencopy-unstable-v1-client-header.h"
#include "xdg-output-unstable-v1-client-header.h"
// After the declarations.
#include "wayland-private-code.h"
#include "wlr-screencopy-unstable-v1-private-code.h"
#include "xdg-output-unstable-v1-private-code.h"
