#include "tool/screen/x11/screen_picture.h"

#include <algorithm>
#include <cstring>
#include <libyuv/convert.h>

namespace tool {
namespace {

constexpr int black = 16;
constexpr int noColour = 128;

// `alpha` is out of 255; rounds to nearest.
uint8_t Blend(uint32_t above, uint32_t below, uint32_t alpha)
{
    return static_cast<uint8_t>(
        std::min<uint32_t>(above + (below * (255 - alpha) + 127) / 255, 255));
}

int Half(int size)
{
    return (size + 1) / 2;
}

} // namespace

void NarrowColours(const Pixels& picture)
{
    for (int y = 0; y < picture.height; ++y) {
        uint8_t* row = picture.first + static_cast<ptrdiff_t>(y) * picture.stride;
        for (int x = 0; x < picture.width; ++x) {
            uint32_t pixel = 0;
            std::memcpy(&pixel, row + static_cast<ptrdiff_t>(x) * 4, 4);
            pixel = (pixel >> 6 & 0xff0000) | (pixel >> 4 & 0xff00) | (pixel >> 2 & 0xff);
            std::memcpy(row + static_cast<ptrdiff_t>(x) * 4, &pixel, 4);
        }
    }
}

void DrawCursor(const CursorImage& cursor, const Pixels& picture)
{
    const int left = std::max(0, -cursor.x);
    const int right = std::min(cursor.width, picture.width - cursor.x);
    const int bottom = std::min(cursor.height, picture.height - cursor.y);
    for (int y = std::max(0, -cursor.y); y < bottom; ++y) {
        const uint32_t* source = cursor.pixels + static_cast<ptrdiff_t>(y) * cursor.width;
        uint8_t* row = picture.first + static_cast<ptrdiff_t>(cursor.y + y) * picture.stride;
        for (int x = left; x < right; ++x) {
            const uint32_t colour = source[x];
            const uint32_t alpha = colour >> 24;
            uint8_t* pixel = row + static_cast<ptrdiff_t>(cursor.x + x) * 4;
            if (alpha != 0) {
                pixel[0] = Blend(colour & 0xff, pixel[0], alpha);
                pixel[1] = Blend(colour >> 8 & 0xff, pixel[1], alpha);
                pixel[2] = Blend(colour >> 16 & 0xff, pixel[2], alpha);
            }
        }
    }
}

size_t YuvBytes(int width, int height)
{
    return static_cast<size_t>(width) * static_cast<size_t>(height) +
           2 * static_cast<size_t>(Half(width)) * static_cast<size_t>(Half(height));
}

void ConvertToYuv(const Pixels& pixels, uint8_t* picture, int width, int height)
{
    const int shownWidth = std::min(width, pixels.width);
    const int shownHeight = std::min(height, pixels.height);
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    const size_t colour = static_cast<size_t>(Half(width)) * static_cast<size_t>(Half(height));
    if (shownWidth < width || shownHeight < height) {
        std::memset(picture, black, luma);
        std::memset(picture + luma, noColour, 2 * colour);
    }
    if (shownWidth > 0 && shownHeight > 0) {
        libyuv::ARGBToI420(pixels.first, pixels.stride, picture, width, picture + luma, Half(width),
                           picture + luma + colour, Half(width), shownWidth, shownHeight);
    }
}

} // namespace tool
