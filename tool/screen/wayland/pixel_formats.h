// What wl_shm calls the orders of colours.
#pragma once

#include "tool/screen/frame_fitter.h"

#include <cstdint>
#include <optional>

namespace tool {

// `format` is one of wl_shm.format. Returns nothing for pixels that are not converted.
std::optional<PixelOrder> OrderOf(uint32_t format);

} // namespace tool
