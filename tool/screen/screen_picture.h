// Turns an image of the screen into a frame: draws the mouse cursor and converts the pixel format.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tool {

// Rows of four-byte pixels: blue, green, red, one byte that means nothing.
struct Pixels
{
    uint8_t* first = nullptr;
    int stride = 0; // bytes from row to row
    int width = 0;
    int height = 0;
};

// Premultiplied colours with alpha in the highest byte, without padding between rows. The position
// is that of the upper left corner, relative to the image.
struct CursorImage
{
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    const uint32_t* pixels = nullptr;
};

// Converts pixels with 10 bits per colour (blue in the lowest bits, two unused bits on top) to
// those of Pixels, in place, dropping the lowest two bits of each colour.
void NarrowColours(const Pixels& picture);

// Draws the part of the cursor that is inside the image, for as long as this object exists. Then
// the image is as before.
class DrawnCursor
{
public:
    DrawnCursor(const CursorImage& cursor, const Pixels& picture);
    DrawnCursor(const DrawnCursor&) = delete;
    DrawnCursor& operator=(const DrawnCursor&) = delete;
    ~DrawnCursor();

private:
    Pixels m_place;
    std::vector<uint8_t> m_covered; // what is under it
};

// The size of a yuv420p frame in bytes: luma, then two chroma planes of half the size, rounded up.
size_t YuvBytes(int width, int height);

// Converts into a yuv420p picture of this size (BT.601 with limited range, as ffmpeg does unasked).
// Where the pixels do not reach, it is black; where they reach beyond, they are cut off.
void ConvertToYuv(const Pixels& pixels, uint8_t* picture, int width, int height);

} // namespace tool
