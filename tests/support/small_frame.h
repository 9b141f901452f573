// Colours of small frames in yuv420p.
#pragma once

#include <QtGlobal>

#include <cstddef>
#include <cstdint>
#include <vector>

inline constexpr int kWidth = 64;
inline constexpr int kHeight = 48;

struct Yuv
{
    int y = 0;
    int u = 0;
    int v = 0;
    bool IsLike(const Yuv& other) const
    {
        constexpr int tolerance = 3;
        return qAbs(y - other.y) <= tolerance && qAbs(u - other.u) <= tolerance &&
               qAbs(v - other.v) <= tolerance;
    }
};

inline constexpr Yuv kRed{81, 90, 240};
inline constexpr Yuv kGreen{145, 54, 34};
inline constexpr Yuv kBlue{41, 240, 110};

// In the middle of this row of a frame of that size.
inline Yuv ColourAt(size_t row, const std::vector<uint8_t>& frame)
{
    constexpr size_t width = kWidth;
    constexpr size_t luma = width * kHeight;
    const size_t colour = row / 2 * (width / 2) + width / 4;
    return {frame[row * width + width / 2], frame[luma + colour], frame[luma + luma / 4 + colour]};
}
