// A window in which every picture differs from the one before, in a way that survives encoding.
//
// The strip at its top is read back by recording_report: 16 squares of 16 pixels with the number of
// the picture (black 0, white 1, the lowest bit first), then one of 32 by 32 that is white while
// the flash is on. Below, a bar moves.
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
    // Opens it above all others, not managed. Check Good() after.
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
