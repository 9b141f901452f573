#include "tests/support/own_screen.h"

#include <QProcess>

#include <array>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <xcb/randr.h>
#include <xcb/xcb.h>

OwnScreen::OwnScreen(const QStringList& options)
{
    std::array<int, 2> ends{-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    std::vector<QByteArray> words{"Xvfb", "-displayfd", "3", "-nolisten", "tcp"};
    for (const QString& option : options) {
        words.push_back(option.toUtf8());
    }
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (QByteArray& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    m_nServer = fork();
    if (m_nServer == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        const int nothing = open("/dev/null", O_RDWR);
        dup2(nothing, STDERR_FILENO);
        if (ends[1] == 3) {
            fcntl(3, F_SETFD, 0);
        } else {
            dup2(ends[1], 3);
        }
        execvp(pointers[0], pointers.data());
        _exit(127);
    }
    close(ends[1]);
    char letter = 0;
    while (read(ends[0], &letter, 1) == 1 && letter != '\n') {
        m_name += letter;
    }
    close(ends[0]);
    if (m_name.isEmpty()) {
        return;
    }
    m_name.prepend(':');
    xcb_connection_t* connection = xcb_connect(m_name, nullptr);
    if (xcb_connection_has_error(connection) != 0) {
        xcb_disconnect(connection);
        return;
    }
    m_pConnection = connection;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(connection)).data;
    m_root = screen->root;
    m_nWidth = screen->width_in_pixels;
    m_nHeight = screen->height_in_pixels;
    m_nDepth = screen->root_depth;
}

OwnScreen::~OwnScreen()
{
    if (m_pConnection != nullptr) {
        xcb_disconnect(m_pConnection);
    }
    Kill();
}

void OwnScreen::Kill()
{
    if (m_nServer > 0) {
        kill(m_nServer, SIGKILL);
        waitpid(m_nServer, nullptr, 0);
        m_nServer = -1;
        // Normally the server removes these itself.
        unlink("/tmp/.X11-unix/X" + m_name.mid(1));
        unlink("/tmp/.X" + m_name.mid(1) + "-lock");
    }
}

void OwnScreen::Signal(int number) const
{
    kill(m_nServer, number);
}

void OwnScreen::Sync()
{
    std::free(xcb_get_input_focus_reply( // NOLINT(*-no-malloc): xcb's way
        m_pConnection, xcb_get_input_focus(m_pConnection), nullptr));
}

void OwnScreen::ShowPicture()
{
    const xcb_gcontext_t context = xcb_generate_id(m_pConnection);
    xcb_create_gc(m_pConnection, context, m_root, 0, nullptr);
    std::vector<uint32_t> row(static_cast<size_t>(m_nWidth));
    for (int y = 0; y < m_nHeight; ++y) {
        for (int x = 0; x < m_nWidth; ++x) {
            const bool print =
                y % 14 < 9 && (x / 7 * 131 + y / 14 * 17) % 5 == 0 && (x ^ y) % 3 == 0;
            const auto red = static_cast<uint32_t>(128 + 100 * std::sin(x * 0.01 + y * 0.003));
            const auto green = static_cast<uint32_t>(128 + 90 * std::sin(x * 0.004 - y * 0.01));
            const auto blue = static_cast<uint32_t>(128 + 80 * std::cos(y * 0.02));
            row[static_cast<size_t>(x)] =
                print ? Pixel(0x202020) : Pixel(red << 16 | green << 8 | blue);
        }
        xcb_put_image(m_pConnection, XCB_IMAGE_FORMAT_Z_PIXMAP, m_root, context,
                      static_cast<uint16_t>(m_nWidth), 1, 0, static_cast<int16_t>(y), 0, m_nDepth,
                      static_cast<uint32_t>(row.size() * 4),
                      reinterpret_cast<const uint8_t*>(row.data()));
    }
    Sync();
}

// Each colour's upper two bits stand for the lower two of its ten, so that white is white.
uint32_t OwnScreen::Pixel(uint32_t colour) const
{
    const auto ten = [&](int shift) {
        const uint32_t eight = colour >> shift & 0xff;
        return eight << 2 | eight >> 6;
    };
    return m_nDepth == 30 ? ten(16) << 20 | ten(8) << 10 | ten(0) : colour;
}

void OwnScreen::ShowColour(uint32_t colour, int mouseX, int mouseY)
{
    const uint32_t pixel = Pixel(colour);
    xcb_change_window_attributes(m_pConnection, m_root, XCB_CW_BACK_PIXEL, &pixel);
    xcb_clear_area(m_pConnection, 0, m_root, 0, 0, 0, 0);
    constexpr uint16_t arrow = 68; // its hot spot is the upper left corner
    SetPointer(arrow);
    MovePointer(mouseX, mouseY);
}

// The server has no cursor until one is set.
void OwnScreen::SetPointer(uint16_t glyph)
{
    const xcb_font_t font = xcb_generate_id(m_pConnection);
    xcb_open_font(m_pConnection, font, 6, "cursor");
    const xcb_cursor_t cursor = xcb_generate_id(m_pConnection);
    xcb_create_glyph_cursor(m_pConnection, cursor, font, font, glyph,
                            static_cast<uint16_t>(glyph + 1), 0, 0, 0, 0xffff, 0xffff, 0xffff);
    xcb_change_window_attributes(m_pConnection, m_root, XCB_CW_CURSOR, &cursor);
    Sync();
}

void OwnScreen::Occupy()
{
    xcb_grab_server(m_pConnection);
    Sync();
}

void OwnScreen::Release()
{
    xcb_ungrab_server(m_pConnection);
    Sync();
}

void OwnScreen::MovePointer(int x, int y)
{
    xcb_warp_pointer(m_pConnection, XCB_NONE, m_root, 0, 0, 0, 0, static_cast<int16_t>(x),
                     static_cast<int16_t>(y));
    Sync();
}

void OwnScreen::Paint(int x, int y, int width, int height, uint32_t colour)
{
    const xcb_gcontext_t context = xcb_generate_id(m_pConnection);
    const uint32_t pixel = Pixel(colour);
    xcb_create_gc(m_pConnection, context, m_root, XCB_GC_FOREGROUND, &pixel);
    const xcb_rectangle_t part{static_cast<int16_t>(x), static_cast<int16_t>(y),
                               static_cast<uint16_t>(width), static_cast<uint16_t>(height)};
    xcb_poly_fill_rectangle(m_pConnection, m_root, context, 1, &part);
    xcb_free_gc(m_pConnection, context);
    Sync();
}

// Uses the xrandr program: the library call fails in all versions up to 1.15.
bool OwnScreen::AddMonitor(int x, int y, int width, int height)
{
    const QString place =
        QString("%1/100x%2/100+%3+%4").arg(width).arg(height).arg(x).arg(y); // with sizes in mm
    return QProcess::execute("xrandr",
                             {"-display", m_name, "--setmonitor", "second", place, "none"}) == 0;
}

// Switches all monitors off first, because none may extend beyond the screen.
void OwnScreen::Resize(int width, int height)
{
    xcb_randr_get_screen_resources_reply_t* resources = xcb_randr_get_screen_resources_reply(
        m_pConnection, xcb_randr_get_screen_resources(m_pConnection, m_root), nullptr);
    if (resources != nullptr) {
        const xcb_randr_crtc_t* crtcs = xcb_randr_get_screen_resources_crtcs(resources);
        for (int i = 0; i < resources->num_crtcs; ++i) {
            std::free(xcb_randr_set_crtc_config_reply( // NOLINT(*-no-malloc)
                m_pConnection,
                xcb_randr_set_crtc_config(m_pConnection, crtcs[i], 0, resources->config_timestamp,
                                          0, 0, XCB_NONE, XCB_RANDR_ROTATION_ROTATE_0, 0, nullptr),
                nullptr));
        }
        std::free(resources); // NOLINT(*-no-malloc)
    }
    xcb_randr_set_screen_size(m_pConnection, m_root, static_cast<uint16_t>(width),
                              static_cast<uint16_t>(height), 300, 300);
    Sync();
}
