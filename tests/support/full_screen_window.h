// A full-screen window of another program, with the keyboard: a presentation, a game.
#pragma once

#include <cstdint>

struct xcb_connection_t;

class FullScreenWindow
{
public:
    // Connects to DISPLAY and maps the window. With `asks`, it asks the window manager to be full
    // screen. Otherwise it merely has the size of the screen and no frame, as old games.
    explicit FullScreenWindow(bool asks);
    FullScreenWindow(const FullScreenWindow&) = delete;
    FullScreenWindow& operator=(const FullScreenWindow&) = delete;
    ~FullScreenWindow();

    bool HasKeyboard() const;
    uint32_t Id() const { return m_window; }
    // How many keys have been pressed in it.
    int Keys();

private:
    uint32_t Atom(const char* name) const;
    void SetAtom(const char* property, const char* value) const;
    void RemoveFrame() const;

    xcb_connection_t* m_pConnection;
    uint32_t m_window = 0;
    int m_nKeys = 0;
};
