#include "tool/screen/wayland/pixel_formats.h"

#include "tool/screen/wayland/wayland_client.h"

namespace tool {

// The names are in the order from the highest bit.
std::optional<PixelOrder> OrderOf(uint32_t format)
{
    switch (format) {
    case WL_SHM_FORMAT_ARGB8888:
    case WL_SHM_FORMAT_XRGB8888:
        return PixelOrder::Bgr;
    case WL_SHM_FORMAT_ABGR8888:
    case WL_SHM_FORMAT_XBGR8888:
        return PixelOrder::Rgb;
    case WL_SHM_FORMAT_ARGB2101010:
    case WL_SHM_FORMAT_XRGB2101010:
        return PixelOrder::Bgr10;
    case WL_SHM_FORMAT_ABGR2101010:
    case WL_SHM_FORMAT_XBGR2101010:
        return PixelOrder::Rgb10;
    case WL_SHM_FORMAT_RGB888:
        return PixelOrder::PackedBgr;
    case WL_SHM_FORMAT_BGR888:
        return PixelOrder::PackedRgb;
    default:
        return std::nullopt;
    }
}

} // namespace tool
