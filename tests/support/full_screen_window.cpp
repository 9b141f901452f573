#include "tests/support/full_screen_window.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <xcb/xcb.h>

namespace {

template <class T>
std::unique_ptr<T, decltype(&std::free)> Own(T* reply)
{
    return {reply, &std::free};
}

} // namespace

FullScreenWindow::FullScreenWindow(bool asks) : m_pConnection(xcb_connect(nullptr, nullptr))
{
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(m_pConnection)).data;
    m_window = xcb_generate_id(m_pConnection);
    const std::array<uint32_t, 2> values{0x204060, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(m_pConnection, XCB_COPY_FROM_PARENT, m_window, screen->root, 0, 0,
                      screen->width_in_pixels, screen->height_in_pixels, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    xcb_change_property(m_pConnection, XCB_PROP_MODE_REPLACE, m_window, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, 11, "full screen");
    if (asks) {
        SetAtom("_NET_WM_STATE", "_NET_WM_STATE_FULLSCREEN");
    } else {
        RemoveFrame();
    }
    xcb_map_window(m_pConnection, m_window);
    xcb_flush(m_pConnection);
}

FullScreenWindow::~FullScreenWindow()
{
    xcb_disconnect(m_pConnection);
}

uint32_t FullScreenWindow::Atom(const char* name) const
{
    const auto cookie =
        xcb_intern_atom(m_pConnection, 0, static_cast<uint16_t>(std::strlen(name)), name);
    const auto reply = Own(xcb_intern_atom_reply(m_pConnection, cookie, nullptr));
    return reply ? reply->atom : uint32_t{XCB_ATOM_NONE};
}

void FullScreenWindow::SetAtom(const char* property, const char* value) const
{
    const uint32_t atom = Atom(value);
    xcb_change_property(m_pConnection, XCB_PROP_MODE_REPLACE, m_window, Atom(property),
                        XCB_ATOM_ATOM, 32, 1, &atom);
}

void FullScreenWindow::RemoveFrame() const
{
    const std::array<uint32_t, 5> hints{2, 0, 0, 0, 0}; // decorations: none
    const uint32_t property = Atom("_MOTIF_WM_HINTS");
    xcb_change_property(m_pConnection, XCB_PROP_MODE_REPLACE, m_window, property, property, 32,
                        hints.size(), hints.data());
}

bool FullScreenWindow::HasKeyboard() const
{
    const auto reply =
        Own(xcb_get_input_focus_reply(m_pConnection, xcb_get_input_focus(m_pConnection), nullptr));
    return reply && reply->focus == m_window;
}

int FullScreenWindow::Keys()
{
    while (const auto event = Own(xcb_poll_for_event(m_pConnection))) {
        m_nKeys += (event->response_type & 0x7fU) == XCB_KEY_PRESS ? 1 : 0;
    }
    return m_nKeys;
}
