// A virtual X screen of a test's own, with any size, which the test can end during a recording.
#pragma once

#include <QByteArray>
#include <QStringList>

#include <memory>
#include <sys/types.h>

struct xcb_connection_t;

class OwnScreen
{
public:
    // Options of Xvfb, including the size: "-screen", "0", "640x480x24".
    explicit OwnScreen(const QStringList& options);
    OwnScreen(const OwnScreen&) = delete;
    OwnScreen& operator=(const OwnScreen&) = delete;
    ~OwnScreen();

    bool Good() const { return m_pConnection != nullptr; }
    QByteArray Name() const { return m_name; } // as in DISPLAY

    // Fills the screen with colours, edges and small print.
    void ShowPicture();
    // Fills it with one colour, 0xRRGGBB, and moves the mouse there.
    void ShowColour(uint32_t colour, int mouseX, int mouseY);
    // Another glyph of the font "cursor", white on black.
    void SetPointer(uint16_t glyph);
    void MovePointer(int x, int y);
    // Fills a part of it.
    void Paint(int x, int y, int width, int height, uint32_t colour);
    // Adds a second monitor that shows this part of the screen.
    bool AddMonitor(int x, int y, int width, int height);
    // The server answers nobody else until it is released.
    void Occupy();
    void Release();
    // Shrinks the screen or restores its size.
    void Resize(int width, int height);
    // Sends the server a signal.
    void Signal(int number) const;
    // Kills the server.
    void Kill();

private:
    void Sync();
    uint32_t Pixel(uint32_t colour) const;

    QByteArray m_name;
    pid_t m_nServer = -1;
    xcb_connection_t* m_pConnection = nullptr;
    uint32_t m_root = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    uint8_t m_nDepth = 24;
};
