#include "tests/support/signal/pattern_window.h"

#include <array>
#include <xcb/xcb.h>

namespace {
constexpr uint32_t black = 0x000000;
constexpr uint32_t white = 0xffffff;
constexpr uint32_t ground = 0x305070;
constexpr int cell = 16;
constexpr int cells = 16;
} // namespace

PatternWindow::PatternWindow(Geometry geometry)
    : m_pConnection(xcb_connect(nullptr, nullptr)),
      m_geometry(geometry)
{
    if (!Good()) {
        return;
    }
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data;
    if (m_geometry.width == 0) {
        m_geometry.width = screen->width_in_pixels;
        m_geometry.height = screen->height_in_pixels;
    }
    const auto x = static_cast<int16_t>(m_geometry.x);
    const auto y = static_cast<int16_t>(m_geometry.y);
    const auto width = static_cast<uint16_t>(m_geometry.width);
    const auto height = static_cast<uint16_t>(m_geometry.height);
    m_window = xcb_generate_id(m_pConnection);
    const std::array<uint32_t, 2> values{black, 1};
    xcb_create_window(m_pConnection, XCB_COPY_FROM_PARENT, m_window, screen->root, x, y, width,
                      height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values.data());
    m_pixmap = xcb_generate_id(m_pConnection);
    xcb_create_pixmap(m_pConnection, screen->root_depth, m_pixmap, m_window, width, height);
    m_context = xcb_generate_id(m_pConnection);
    const uint32_t exposures = 0;
    xcb_create_gc(m_pConnection, m_context, m_pixmap, XCB_GC_GRAPHICS_EXPOSURES, &exposures);
    xcb_map_window(m_pConnection, m_window);
    xcb_flush(m_pConnection);
}

PatternWindow::~PatternWindow()
{
    xcb_disconnect(m_pConnection);
}

bool PatternWindow::Good() const
{
    return xcb_connection_has_error(m_pConnection) == 0;
}

void PatternWindow::Fill(uint32_t colour, int x, int y, int width, int height)
{
    xcb_change_gc(m_pConnection, m_context, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t area{static_cast<int16_t>(x), static_cast<int16_t>(y),
                               static_cast<uint16_t>(width), static_cast<uint16_t>(height)};
    xcb_poly_fill_rectangle(m_pConnection, m_pixmap, m_context, 1, &area);
}

// Drawn off-screen and copied with one request, so that a grab never sees half a picture. Only the
// strip and the bar's band are copied: a full screen 60 times a second would load the machine more
// than the recording does.
void PatternWindow::Draw(uint16_t number, bool flash)
{
    constexpr int band = 96;
    const int height = m_geometry.height < band ? m_geometry.height : band;
    Fill(flash ? white : ground, 0, 0, m_geometry.width, height);
    for (int i = 0; i < cells; ++i) {
        Fill((number >> i & 1) != 0 ? white : black, i * cell, 0, cell, 2 * cell);
    }
    Fill(flash ? white : black, cells * cell, 0, 2 * cell, 2 * cell);
    Fill(0xe0a030, number * 4 % m_geometry.width, 2 * cell + 8, 2 * cell, 2 * cell);
    xcb_copy_area(m_pConnection, m_pixmap, m_window, m_context, 0, 0, 0, 0,
                  static_cast<uint16_t>(m_geometry.width), static_cast<uint16_t>(height));
    xcb_flush(m_pConnection);
}
