// A window whose picture changes in every frame in a way that survives encoding.
//
// recording_report reads the strip at its top: 16 squares of 16 pixels with the number of the
// picture (black 0, white 1, lowest bit first), then one of 32 by 32 that is white during a flash.
// A bar moves below it.
#pragma once

#include <cstdint>

struct xcb_connection_t;

struct Geometry
{
    int x = 0;
    int y = 0;
    int width = 0; // 0: the whole screen
    int height = 0;
};

class PatternWindow
{
public:
    // Opens it above all others, unmanaged. Check Good() afterwards.
    explicit PatternWindow(Geometry geometry);
    PatternWindow(const PatternWindow&) = delete;
    PatternWindow& operator=(const PatternWindow&) = delete;
    ~PatternWindow();

    bool Good() const;
    void Draw(uint16_t number, bool flash);

private:
    void Fill(uint32_t colour, int x, int y, int width, int height);

    xcb_connection_t* m_pConnection = nullptr;
    uint32_t m_window = 0;
    uint32_t m_pixmap = 0;
    uint32_t m_context = 0;
    Geometry m_geometry;
};
