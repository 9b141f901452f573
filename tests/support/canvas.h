// A picture of a screen to draw into.
#pragma once

#include "tool/screen/screen_picture.h"

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <vector>

// Smooth colours with a few hard edges, like a desktop. Rows are padded.
struct Canvas
{
    Canvas(int w, int h)
        : width(w),
          height(h),
          stride(w * 4 + 20),
          bytes(static_cast<size_t>(stride) * static_cast<size_t>(h), 0x5a)
    {
    }

    uint8_t* At(int x, int y)
    {
        const ptrdiff_t place = static_cast<ptrdiff_t>(y) * stride + static_cast<ptrdiff_t>(x) * 4;
        return bytes.data() + place;
    }
    tool::Pixels View() { return {bytes.data(), stride, width, height}; }
    void Fill(uint8_t blue, uint8_t green, uint8_t red)
    {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                std::copy_n(std::initializer_list<uint8_t>{blue, green, red, 77}.begin(), 4,
                            At(x, y));
            }
        }
    }
    QByteArray Colour(int x, int y) { return {reinterpret_cast<const char*>(At(x, y)), 3}; }

    int width;
    int height;
    int stride;
    std::vector<uint8_t> bytes;
};

inline void Paint(Canvas& canvas)
{
    for (int y = 0; y < canvas.height; ++y) {
        for (int x = 0; x < canvas.width; ++x) {
            uint8_t* pixel = canvas.At(x, y);
            const bool box = x / 40 % 3 == 1 && y / 30 % 2 == 1;
            pixel[0] = static_cast<uint8_t>(box ? 250 : 128 + 120 * std::sin(x * 0.02));
            pixel[1] = static_cast<uint8_t>(box ? 20 : 128 + 120 * std::cos(y * 0.03));
            pixel[2] = static_cast<uint8_t>(box ? 90 : 255 * x / canvas.width);
        }
    }
}
