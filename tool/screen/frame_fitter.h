// Turns a picture as a compositor delivers it into a frame: upright, in the frame's size and pixel
// format.
#pragma once

#include "tool/screen/rectangle.h"

#include <cstdint>
#include <vector>

namespace tool {

// The order of a pixel's colours, from the lowest byte or bit. A fourth byte, or two bits on top,
// means nothing. 10: bits per colour. Packed: three bytes.
enum class PixelOrder { Bgr, Rgb, Bgr10, Rgb10, PackedBgr, PackedRgb };

int PixelBytes(PixelOrder order);

struct SourcePicture
{
    const uint8_t* first = nullptr; // of the uppermost row
    int stride = 0;                 // bytes from row to row; negative if the rows are upside down
    int width = 0;
    int height = 0;
    PixelOrder order = PixelOrder::Bgr;
    // How the monitor is turned and flipped, 0 to 7 as wl_output.transform and PipeWire count.
    int transform = 0;
};

// The largest width or height of a picture: no monitor has more, and sizes in bytes fit an int.
constexpr int largestSide = 16384;

// The size of what the picture shows when it is upright. Its place is 0, 0.
Rectangle UprightSize(int width, int height, int transform);

class FrameFitter
{
public:
    // Writes a yuv420p frame (YuvBytes() long) of this size; both are even. A picture of another
    // size is scaled to fit, with black borders; an odd column or row is cut off.
    void Write(const SourcePicture& source, uint8_t* frame, int width, int height);

private:
    std::vector<uint8_t> m_narrow;    // 8 bits per colour
    std::vector<uint8_t> m_delivered; // yuv420p, as the picture lies
    std::vector<uint8_t> m_upright;   // before scaling
};

} // namespace tool
