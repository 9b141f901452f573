#include "tool/screen/screen_picture.h"

#include <algorithm>
#include <cstring>
#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>

namespace tool {
namespace {

constexpr int black = 16;
constexpr int noColour = 128;

constexpr int pixelBytes = 4;

int Half(int size)
{
    return (size + 1) / 2;
}

} // namespace

void NarrowColours(const Pixels& picture)
{
    libyuv::AR30ToARGB(picture.first, picture.stride, picture.first, picture.stride, picture.width,
                       picture.height);
}

DrawnCursor::DrawnCursor(const CursorImage& cursor, const Pixels& picture)
{
    const int left = std::max(0, -cursor.x);
    const int top = std::max(0, -cursor.y);
    const int width = std::min(cursor.width, picture.width - cursor.x) - left;
    const int height = std::min(cursor.height, picture.height - cursor.y) - top;
    if (width <= 0 || height <= 0) {
        return;
    }
    m_place = {picture.first + static_cast<ptrdiff_t>(cursor.y + top) * picture.stride +
                   static_cast<ptrdiff_t>(cursor.x + left) * pixelBytes,
               picture.stride, width, height};
    m_covered.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * pixelBytes);
    libyuv::ARGBCopy(m_place.first, m_place.stride, m_covered.data(), width * pixelBytes, width,
                     height);
    const auto* source = reinterpret_cast<const uint8_t*>(
        cursor.pixels + static_cast<ptrdiff_t>(top) * cursor.width + left);
    libyuv::ARGBBlend(source, cursor.width * pixelBytes, m_place.first, m_place.stride,
                      m_place.first, m_place.stride, width, height);
}

DrawnCursor::~DrawnCursor()
{
    if (!m_covered.empty()) {
        libyuv::ARGBCopy(m_covered.data(), m_place.width * pixelBytes, m_place.first,
                         m_place.stride, m_place.width, m_place.height);
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
