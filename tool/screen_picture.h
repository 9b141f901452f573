// A grabbed picture on its way to the encoder: the mouse cursor drawn into it, its colours changed.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tool {

// Rows of four-byte pixels: blue, green, red, one byte that means nothing.
struct Pixels
{
    uint8_t* first = nullptr;
    int stride = 0; // bytes from row to row
    int width = 0;
    int height = 0;
};

// Premultiplied colours with their alpha in the highest byte, rows without gaps. The place is that
// of the upper left corner, from the picture's.
struct CursorImage
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    const uint32_t* pixels = nullptr;
};

// Draws what lies inside the picture.
void DrawCursor(const CursorImage& cursor, const Pixels& picture);

// Bytes of a yuv420p picture: all luma, then the two colour planes of half the size, rounded up.
size_t YuvBytes(int width, int height);

// Converts into a yuv420p picture of this size (BT.601 with limited range, as ffmpeg does unasked).
// Where the pixels do not reach, it is black; where they reach beyond, they are cut off.
void ConvertToYuv(const Pixels& pixels, uint8_t* picture, int width, int height);

} // namespace tool
