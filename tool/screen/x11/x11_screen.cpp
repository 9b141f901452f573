#include "tool/screen/x11/x11_screen.h"

#include "tool/screen/screen_picture.h"
#include "tool/screen/x11/damage_reports.h"
#include "tool/screen/x11/display.h"
#include "tool/screen/x11/image_transfer.h"
#include "tool/screen/x11/pixel_format.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <poll.h>
#include <tuple>
#include <utility>
#include <xcb/xfixes.h>

namespace tool {
namespace {

constexpr int pixelBytes = 4;
// Of a screen that is said to be still, a stripe is looked at each time: some drivers do not report
// what a program draws past the server.
constexpr int stripes = 16;

int StripeHeight(int height)
{
    return (height + stripes - 1) / stripes;
}

size_t Bytes(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height) * pixelBytes;
}

int MillisecondsUntil(SteadyTime time)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(time - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, 1000));
}

class X11Screen : public Screen
{
public:
    X11Screen(Display display, const Rectangle& area, int colourBits);

    Outcome Next(SteadyTime until) override;
    void Write(uint8_t* frame) override;

private:
    using Pointer = xcb_xfixes_get_cursor_image_reply_t;

    xcb_connection_t* Connection() const { return m_display.connection.get(); }
    void Ask();
    void AskForStripe();
    bool WaitForAnswers(SteadyTime until);
    void FollowEvents();
    void AskForSize();
    void TakeSize();
    bool IsStill();
    bool TakePointer();
    // The first row of the stripe, and the shared memory for its newest state.
    uint8_t* Stripe() { return m_transfer.Memory() + Bytes(m_nWidth, m_nStripeTop); }
    uint8_t* NewStripe() { return m_transfer.Memory() + Bytes(m_area.width, m_area.height); }

    const Display m_display;
    const Rectangle m_area;
    const int m_nColourBits;
    ImageTransfer m_transfer;
    DamageReports m_reports;
    PendingReply<Pointer> m_newPointer;
    Owned<Pointer> m_pointer; // in the picture
    PendingReply<xcb_get_geometry_reply_t> m_size;

    int m_nScreenWidth;
    int m_nScreenHeight;
    int m_nWidth = 0; // of the picture: smaller than the area if the screen has shrunk
    int m_nHeight = 0;
    int m_nStripeTop = 0;
    int m_nStripeHeight = 0;
    bool m_bAsked = false;
    bool m_bWhole = true;    // the whole picture was asked for, not a stripe
    bool m_bOutdated = true; // whatever the reports say
    int m_nRefusals = 0;
};

X11Screen::X11Screen(Display display, const Rectangle& area, int colourBits)
    : m_display(std::move(display)),
      m_area(area),
      m_nColourBits(colourBits),
      m_transfer(Connection(), m_display.screen->root,
                 Bytes(area.width, area.height + StripeHeight(area.height))),
      m_reports(Connection(), m_display.screen->root),
      m_nScreenWidth(m_display.screen->width_in_pixels),
      m_nScreenHeight(m_display.screen->height_in_pixels)
{
    const uint32_t sizeChanges = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(Connection(), m_display.screen->root, XCB_CW_EVENT_MASK,
                                 &sizeChanges);
}

Screen::Outcome X11Screen::Next(SteadyTime until)
{
    if (!m_bAsked) {
        Ask();
    }
    while (WaitForAnswers(until)) {
        m_bAsked = false;
        if (xcb_connection_has_error(Connection()) != 0) {
            return Outcome::Lost;
        }
        if (m_nWidth > 0 && m_nHeight > 0 && m_transfer.IsRefused()) {
            // The screen has just shrunk: the next request asks for what remains.
            constexpr int patience = 10;
            m_bOutdated = true;
            AskForSize();
            return ++m_nRefusals < patience ? Outcome::Waiting : Outcome::Lost;
        }
        m_nRefusals = 0;
        if (m_bWhole) {
            if (m_nColourBits == 10) {
                NarrowColours({m_transfer.Memory(), m_nWidth * pixelBytes, m_nWidth, m_nHeight});
            }
            TakePointer();
            return Outcome::Taken;
        }
        if (IsStill()) {
            m_reports.NoteStill();
            return TakePointer() ? Outcome::Taken : Outcome::Unchanged;
        }
        Ask();
    }
    return Outcome::Waiting;
}

void X11Screen::Ask()
{
    TakeSize();
    FollowEvents();
    m_bWhole = m_bOutdated || m_reports.MayHaveChanged();
    if (m_bWhole) {
        m_bOutdated = false;
        m_nWidth = std::clamp(m_nScreenWidth - m_area.x, 0, m_area.width);
        m_nHeight = std::clamp(m_nScreenHeight - m_area.y, 0, m_area.height);
        if (m_transfer.IsShared()) { // in a reply there is no room for a stripe beside the picture
            m_reports.Renew();
        }
        if (m_nWidth > 0 && m_nHeight > 0) {
            m_transfer.Ask({m_area.x, m_area.y, m_nWidth, m_nHeight});
        }
    } else if (m_nWidth > 0 && m_nHeight > 0) {
        AskForStripe();
    }
    m_newPointer.Await(xcb_xfixes_get_cursor_image(Connection()).sequence);
    xcb_flush(Connection());
    m_bAsked = true;
}

void X11Screen::AskForStripe()
{
    m_nStripeTop += m_nStripeHeight;
    if (m_nStripeTop >= m_nHeight) {
        m_nStripeTop = 0;
    }
    m_nStripeHeight = std::min(StripeHeight(m_area.height), m_nHeight - m_nStripeTop);
    m_transfer.Ask({m_area.x, m_area.y + m_nStripeTop, m_nWidth, m_nStripeHeight},
                   Bytes(m_area.width, m_area.height));
}

bool X11Screen::WaitForAnswers(SteadyTime until)
{
    while (!m_transfer.Poll() || !m_newPointer.Poll(Connection())) {
        pollfd server{xcb_get_file_descriptor(Connection()), POLLIN, 0};
        const int patience = MillisecondsUntil(until);
        if (poll(&server, 1, patience) <= 0 && patience == 0) {
            return false;
        }
    }
    return true;
}

void X11Screen::FollowEvents()
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(Connection())}) {
        m_reports.Follow(*event);
        if ((event->response_type & 0x7f) == XCB_CONFIGURE_NOTIFY) {
            const auto& change = reinterpret_cast<const xcb_configure_notify_event_t&>(*event);
            if (change.window == m_display.screen->root) {
                m_nScreenWidth = change.width;
                m_nScreenHeight = change.height;
                m_bOutdated = true;
            }
        }
    }
}

// Nothing waits for the answer: a server that has stopped must not keep us.
void X11Screen::AskForSize()
{
    if (m_size.Poll(Connection())) {
        m_size.Await(xcb_get_geometry(Connection(), m_display.screen->root).sequence);
        xcb_flush(Connection());
    }
}

void X11Screen::TakeSize()
{
    if (m_size.Poll(Connection()) && m_size.Last()) {
        m_nScreenWidth = m_size.Last()->width;
        m_nScreenHeight = m_size.Last()->height;
        m_size.Last().reset();
    }
}

// The answers came after the reports of all changes before them.
bool X11Screen::IsStill()
{
    FollowEvents();
    if (m_bOutdated || m_reports.MayHaveChanged()) {
        return false;
    }
    if (m_nWidth == 0 || m_nHeight == 0) {
        return true;
    }
    if (m_nColourBits == 10) {
        NarrowColours({NewStripe(), m_nWidth * pixelBytes, m_nWidth, m_nStripeHeight});
    }
    if (std::memcmp(Stripe(), NewStripe(), Bytes(m_nWidth, m_nStripeHeight)) != 0) {
        m_reports.GiveUp();
        return false;
    }
    return true;
}

// Returns whether it has moved or looks different.
bool X11Screen::TakePointer()
{
    const auto identity = [](const Owned<Pointer>& pointer) {
        return pointer ? std::optional(std::tuple(pointer->x, pointer->y, pointer->cursor_serial))
                       : std::nullopt;
    };
    const bool changed = identity(m_pointer) != identity(m_newPointer.Last());
    m_pointer = std::move(m_newPointer.Last());
    return changed;
}

void X11Screen::Write(uint8_t* frame)
{
    CursorImage pointer;
    if (m_pointer) {
        pointer = {m_pointer->x - m_pointer->xhot - m_area.x,
                   m_pointer->y - m_pointer->yhot - m_area.y, m_pointer->width, m_pointer->height,
                   xcb_xfixes_get_cursor_image_cursor_image(m_pointer.get())};
    }
    const Pixels picture{m_transfer.Memory(), m_nWidth * pixelBytes, m_nWidth, m_nHeight};
    const DrawnCursor drawn(pointer, picture);
    ConvertToYuv(picture, frame, m_area.width, m_area.height);
}

} // namespace

std::unique_ptr<Screen> OpenX11Screen(const std::string& display, const Rectangle& area)
{
    if (area.x < 0 || area.y < 0 || area.width < 2 || area.height < 2) {
        return nullptr;
    }
    auto opened = OpenDisplay(display);
    if (!opened || !HasExtension(opened->connection.get(), &xcb_xfixes_id)) {
        return nullptr;
    }
    xcb_connection_t* connection = opened->connection.get();
    const auto bits = ColourBits(*opened);
    const Owned<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, 1, 0), nullptr));
    if (!bits || !version) {
        return nullptr;
    }
    return std::make_unique<X11Screen>(*std::move(opened), area, *bits);
}

} // namespace tool
