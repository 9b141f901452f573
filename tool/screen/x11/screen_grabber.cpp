#include "tool/screen/x11/screen_grabber.h"

#include "tool/screen/x11/owned_reply.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <utility>
#include <xcb/shm.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

namespace tool {
namespace {

constexpr int pixelBytes = 4;

bool HasExtension(xcb_connection_t* connection, xcb_extension_t* extension)
{
    const xcb_query_extension_reply_t* data = xcb_get_extension_data(connection, extension);
    return data != nullptr && data->present != 0;
}

const xcb_screen_t* FindScreen(const xcb_setup_t* setup, int number)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(setup);
    for (; number > 0 && screens.rem > 1; --number) {
        xcb_screen_next(&screens);
    }
    return screens.rem > 0 ? screens.data : nullptr;
}

bool HasFourBytePixels(const xcb_setup_t* setup, uint8_t depth)
{
    for (auto it = xcb_setup_pixmap_formats_iterator(setup); it.rem > 0; xcb_format_next(&it)) {
        if (it.data->depth == depth) {
            return it.data->bits_per_pixel == pixelBytes * 8;
        }
    }
    return false;
}

bool HasMasks(const xcb_visualtype_t& visual, uint32_t red, uint32_t green, uint32_t blue)
{
    return visual._class == XCB_VISUAL_CLASS_TRUE_COLOR && visual.red_mask == red &&
           visual.green_mask == green && visual.blue_mask == blue;
}

// The bits per colour, 8 or 10, with blue in the lowest bits. Returns nothing for other pixel
// formats.
std::optional<int> ColourBits(const xcb_screen_t* screen)
{
    for (auto depth = xcb_screen_allowed_depths_iterator(screen); depth.rem > 0;
         xcb_depth_next(&depth)) {
        for (auto it = xcb_depth_visuals_iterator(depth.data); it.rem > 0;
             xcb_visualtype_next(&it)) {
            if (it.data->visual_id != screen->root_visual) {
                continue;
            }
            if (HasMasks(*it.data, 0xff0000, 0xff00, 0xff)) {
                return 8;
            }
            if (HasMasks(*it.data, 0x3ff00000, 0xffc00, 0x3ff)) {
                return 10;
            }
        }
    }
    return std::nullopt;
}

int MillisecondsUntil(SteadyTime time)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(time - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, 1000));
}

} // namespace

struct ScreenGrabber::Private
{
    Private() = default;
    Private(const Private&) = delete;
    Private& operator=(const Private&) = delete;
    ~Private()
    {
        if (connection != nullptr) {
            xcb_disconnect(connection);
        }
        if (memory != nullptr) {
            shmdt(memory);
        }
    }

    xcb_connection_t* connection = nullptr;
    xcb_window_t root = 0;
    Rectangle area;
    uint8_t* memory = nullptr; // shared with the server; null: images come in replies
    xcb_shm_seg_t segment = 0;
    int rootWidth = 0;
    int rootHeight = 0;
    int colourBits = 8;
    int refusals = 0;

    // For the image being grabbed, then for the last one.
    bool asked = false;
    int width = 0;
    int height = 0;
    unsigned int imageRequest = 0; // 0: answered
    unsigned int cursorRequest = 0;
    Owned<xcb_get_image_reply_t> image; // if memory is not shared
    Owned<xcb_xfixes_get_cursor_image_reply_t> cursor;
    bool refused = false;

    bool Connect(const std::string& display);
    void ShareMemory();
    void Ask();
    void AskForImage();
    uint8_t* FirstPixel() const { return image ? xcb_get_image_data(image.get()) : memory; }
    bool PollAnswers();
    bool ReadSize();
    void FollowSize();
    void DrawMouse() const;
};

bool ScreenGrabber::Private::Connect(const std::string& display)
{
    int number = 0;
    connection = xcb_connect(display.c_str(), &number);
    if (xcb_connection_has_error(connection) != 0 || !HasExtension(connection, &xcb_xfixes_id)) {
        return false;
    }
    const xcb_setup_t* setup = xcb_get_setup(connection);
    const xcb_screen_t* screen = FindScreen(setup, number);
    if (screen == nullptr || setup->image_byte_order != XCB_IMAGE_ORDER_LSB_FIRST ||
        !HasFourBytePixels(setup, screen->root_depth)) {
        return false;
    }
    const auto bits = ColourBits(screen);
    if (!bits) {
        return false;
    }
    colourBits = *bits;
    root = screen->root;
    rootWidth = screen->width_in_pixels;
    rootHeight = screen->height_in_pixels;
    const Owned<xcb_xfixes_query_version_reply_t> version(xcb_xfixes_query_version_reply(
        connection, xcb_xfixes_query_version(connection, 1, 0), nullptr));
    const uint32_t sizeChanges = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &sizeChanges);
    return version != nullptr;
}

// A server on another machine or without access to our memory refuses or lacks the extension.
void ScreenGrabber::Private::ShareMemory()
{
    if (!HasExtension(connection, &xcb_shm_id)) {
        return;
    }
    const size_t size =
        static_cast<size_t>(area.width) * static_cast<size_t>(area.height) * pixelBytes;
    const int id = shmget(IPC_PRIVATE, size, IPC_CREAT | 0600);
    if (id < 0) {
        return;
    }
    void* address = shmat(id, nullptr, 0);
    segment = xcb_generate_id(connection);
    const Owned<xcb_generic_error_t> error(xcb_request_check(
        connection, xcb_shm_attach_checked(connection, segment, static_cast<uint32_t>(id), 0)));
    shmctl(id, IPC_RMID, nullptr); // deleted with its last user
    if (reinterpret_cast<intptr_t>(address) == -1) {
        return;
    }
    if (error != nullptr) {
        shmdt(address);
        return;
    }
    memory = static_cast<uint8_t*>(address);
}

void ScreenGrabber::Private::AskForImage()
{
    const auto x = static_cast<int16_t>(area.x);
    const auto y = static_cast<int16_t>(area.y);
    const auto across = static_cast<uint16_t>(width);
    const auto down = static_cast<uint16_t>(height);
    if (memory != nullptr) {
        imageRequest = xcb_shm_get_image(connection, root, x, y, across, down, ~0U,
                                         XCB_IMAGE_FORMAT_Z_PIXMAP, segment, 0)
                           .sequence;
    } else {
        imageRequest =
            xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, root, x, y, across, down, ~0U)
                .sequence;
    }
}

void ScreenGrabber::Private::Ask()
{
    FollowSize();
    width = std::clamp(rootWidth - area.x, 0, area.width);
    height = std::clamp(rootHeight - area.y, 0, area.height);
    imageRequest = 0;
    refused = false;
    if (width > 0 && height > 0) {
        AskForImage();
    }
    cursorRequest = xcb_xfixes_get_cursor_image(connection).sequence;
    xcb_flush(connection);
    asked = true;
}

// Returns true when both replies have arrived.
bool ScreenGrabber::Private::PollAnswers()
{
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (imageRequest != 0 && xcb_poll_for_reply(connection, imageRequest, &reply, &error) != 0) {
        imageRequest = 0;
        refused = reply == nullptr;
        if (memory != nullptr) {
            std::free(reply); // NOLINT(*-no-malloc)
        } else {
            image.reset(static_cast<xcb_get_image_reply_t*>(reply));
            refused =
                refused || xcb_get_image_data_length(image.get()) < width * height * pixelBytes;
        }
        std::free(error); // NOLINT(*-no-malloc)
    }
    reply = nullptr;
    error = nullptr;
    if (cursorRequest != 0 && xcb_poll_for_reply(connection, cursorRequest, &reply, &error) != 0) {
        cursorRequest = 0;
        cursor.reset(static_cast<xcb_xfixes_get_cursor_image_reply_t*>(reply));
        std::free(error); // NOLINT(*-no-malloc)
    }
    return imageRequest == 0 && cursorRequest == 0;
}

bool ScreenGrabber::Private::ReadSize()
{
    const Owned<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(connection, xcb_get_geometry(connection, root), nullptr));
    if (!geometry) {
        return false;
    }
    rootWidth = geometry->width;
    rootHeight = geometry->height;
    return true;
}

void ScreenGrabber::Private::FollowSize()
{
    while (const Owned<xcb_generic_event_t> event{xcb_poll_for_event(connection)}) {
        if ((event->response_type & 0x7f) == XCB_CONFIGURE_NOTIFY) {
            const auto* change = reinterpret_cast<const xcb_configure_notify_event_t*>(event.get());
            if (change->window == root) {
                rootWidth = change->width;
                rootHeight = change->height;
            }
        }
    }
}

void ScreenGrabber::Private::DrawMouse() const
{
    if (cursor) {
        DrawCursor({cursor->x - cursor->xhot - area.x, cursor->y - cursor->yhot - area.y,
                    cursor->width, cursor->height,
                    xcb_xfixes_get_cursor_image_cursor_image(cursor.get())},
                   {FirstPixel(), width * pixelBytes, width, height});
    }
}

ScreenGrabber::ScreenGrabber(std::unique_ptr<Private> members) : m_p(std::move(members)) {}

ScreenGrabber::~ScreenGrabber() = default;

std::unique_ptr<ScreenGrabber> ScreenGrabber::Open(const std::string& display, Rectangle area)
{
    auto members = std::make_unique<Private>();
    members->area = area;
    if (area.x < 0 || area.y < 0 || area.width < 2 || area.height < 2 ||
        !members->Connect(display)) {
        return nullptr;
    }
    members->ShareMemory();
    return std::unique_ptr<ScreenGrabber>(new ScreenGrabber(std::move(members)));
}

ScreenGrabber::Outcome ScreenGrabber::Grab(SteadyTime until)
{
    if (!m_p->asked) {
        m_p->Ask();
    }
    while (!m_p->PollAnswers()) {
        pollfd server{xcb_get_file_descriptor(m_p->connection), POLLIN, 0};
        const int patience = MillisecondsUntil(until);
        if (poll(&server, 1, patience) <= 0 && patience == 0) {
            return Outcome::Waiting;
        }
    }
    m_p->asked = false;
    if (xcb_connection_has_error(m_p->connection) != 0) {
        return Outcome::Lost;
    }
    if (m_p->refused) {
        // The screen has just shrunk: the next request asks for what remains.
        constexpr int patience = 10;
        const bool goesOn = m_p->ReadSize() && ++m_p->refusals < patience;
        return goesOn ? Outcome::Waiting : Outcome::Lost;
    }
    m_p->refusals = 0;
    if (m_p->colourBits == 10) {
        NarrowColours(Picture());
    }
    m_p->DrawMouse();
    return Outcome::Taken;
}

Pixels ScreenGrabber::Picture() const
{
    return {m_p->FirstPixel(), m_p->width * pixelBytes, m_p->width, m_p->height};
}

} // namespace tool
