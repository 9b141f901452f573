#include "tool/screen/x11/pixel_format.h"

namespace tool {
namespace {

bool HasFourBytes(const xcb_setup_t* setup, uint8_t depth)
{
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it)) {
        if (it.data->depth == depth) {
            return it.data->bits_per_pixel == 32;
        }
    }
    return false;
}

bool HasMasks(const xcb_visualtype_t& visual, uint32_t red, uint32_t green, uint32_t blue)
{
    return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == red &&
           visual.green_mask == green && visual.blue_mask == blue;
}

const xcb_visualtype_t* RootVisual(const xcb_screen_t* screen)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0;
         xcb_depth_next(&depth)) {
        for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem > 0;
             xcb_visualtype_next(&it)) {
            if (it.data->visual_id == screen->root_visual) {
                return it.data;
            }
        }
    }
    return nullptr;
}

} // namespace

std::optional<int> ColourBits(const Display& display)
{
    const xcb_setup_t* setup = xcb_get_setup(display.connection.get());
    const xcb_visualtype_t* visual = RootVisual(display.screen);
    if (setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST && visual != nullptr &&
        HasFourBytes(setup, display.screen->root_depth)) {
        if (HasMasks(*visual, 0xff0000, 0xff00, 0xff)) {
            return 8;
        }
        if (HasMasks(*visual, 0x3ff00000, 0xffc00, 0x3ff)) {
            return 10;
        }
    }
    return std::nullopt;
}

} // namespace tool
