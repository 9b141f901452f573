// Pictures of an output, from a compositor that lets programs copy them without asking a person.
#pragma once

#include "tool/screen/screen.h"
#include "tool/screen/wayland/connection.h"
#include "tool/screen/wayland/outputs.h"

#include <memory>

namespace tool {

// `output` is one of `outputs`, which use the connection and have a screencopy manager and shared
// memory. The frames have the size of `area`, whatever becomes of the output.
std::unique_ptr<Screen> OpenScreencopy(std::unique_ptr<Connection> connection,
                                       std::unique_ptr<Outputs> outputs, const Output& output,
                                       const Rectangle& area);

} // namespace tool
