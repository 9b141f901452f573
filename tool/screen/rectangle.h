#pragma once

namespace tool {

// A part of the desktop, in pixels.
struct Rectangle
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const Rectangle&) const = default;
};

// Removes the last column or row of an odd-sized rectangle: yuv420p H.264 needs even sizes.
inline Rectangle EvenSized(Rectangle area)
{
    area.width -= area.width % 2;
    area.height -= area.height % 2;
    return area;
}

} // namespace tool
