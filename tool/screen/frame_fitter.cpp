#include "tool/screen/frame_fitter.h"

#include "tool/screen/screen_picture.h"

#include <algorithm>
#include <libyuv/convert.h>
#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/rotate.h>
#include <libyuv/scale.h>

namespace tool {
namespace {

constexpr int black = 16;
constexpr int noColour = 128;

int Half(int size)
{
    return (size + 1) / 2;
}

// A yuv420p picture, or a part of one.
struct Planes
{
    uint8_t* y = nullptr;
    uint8_t* u = nullptr;
    uint8_t* v = nullptr;
    int stride = 0; // of y; the others have half of it
    int width = 0;
    int height = 0;

    int ColourStride() const { return Half(stride); }
    // `x` and `y` are even.
    Planes Part(const Rectangle& area) const
    {
        const ptrdiff_t colour = static_cast<ptrdiff_t>(area.y / 2) * ColourStride() + area.x / 2;
        return {y + static_cast<ptrdiff_t>(area.y) * stride + area.x,
                u + colour,
                v + colour,
                stride,
                area.width,
                area.height};
    }
};

Planes PlanesAt(uint8_t* memory, int width, int height)
{
    const auto luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    const auto colour = static_cast<size_t>(Half(width)) * static_cast<size_t>(Half(height));
    return {memory, memory + luma, memory + luma + colour, width, width, height};
}

Planes PlanesIn(std::vector<uint8_t>& memory, int width, int height)
{
    memory.resize(YuvBytes(width, height));
    return PlanesAt(memory.data(), width, height);
}

// The pixels with 8 bits per colour.
SourcePicture Narrowed(const SourcePicture& source, std::vector<uint8_t>& memory)
{
    if (source.order != PixelOrder::Bgr10 && source.order != PixelOrder::Rgb10) {
        return source;
    }
    SourcePicture result = source;
    result.order = PixelOrder::Bgr;
    result.stride = source.width * PixelBytes(result.order);
    memory.resize(static_cast<size_t>(result.stride) * static_cast<size_t>(source.height));
    result.first = memory.data();
    const auto convert =
        source.order == PixelOrder::Bgr10 ? libyuv::AR30ToARGB : libyuv::AB30ToARGB;
    convert(source.first, source.stride, memory.data(), result.stride, source.width, source.height);
    return result;
}

// Of pixels with 8 bits per colour, which libyuv names from the highest byte.
auto Conversion(PixelOrder order)
{
    switch (order) {
    case PixelOrder::Rgb:
        return libyuv::ABGRToI420;
    case PixelOrder::PackedBgr:
        return libyuv::RGB24ToI420;
    case PixelOrder::PackedRgb:
        return libyuv::RAWToI420;
    default:
        return libyuv::ARGBToI420;
    }
}

// Converts as much as there is room for.
void Convert(const SourcePicture& source, const Planes& to)
{
    Conversion(source.order)(source.first, source.stride, to.y, to.stride, to.u, to.ColourStride(),
                             to.v, to.ColourStride(), to.width, to.height);
}

// A mirrored monitor's picture was mirrored first, and turned counter-clockwise then. Turning it
// back and mirroring it is the same as reading it from below and turning it the other way from half
// a turn.
SourcePicture WithoutMirror(SourcePicture picture)
{
    constexpr int mirrored = 4;
    if (picture.transform >= mirrored) {
        picture.first += static_cast<ptrdiff_t>(picture.height - 1) * picture.stride;
        picture.stride = -picture.stride;
        picture.transform = (mirrored + 2 - picture.transform % mirrored) % mirrored;
    }
    return picture;
}

void Turn(const Planes& from, int quarters, const Planes& to)
{
    constexpr int degrees = 90;
    libyuv::I420Rotate(from.y, from.stride, from.u, from.ColourStride(), from.v,
                       from.ColourStride(), to.y, to.stride, to.u, to.ColourStride(), to.v,
                       to.ColourStride(), from.width, from.height,
                       static_cast<libyuv::RotationMode>(quarters * degrees));
}

// The largest area with the shape of the picture in the middle of the frame, at even places.
Rectangle FittedArea(const Planes& picture, const Planes& frame)
{
    const int64_t wide = static_cast<int64_t>(frame.height) * picture.width;
    const int64_t high = static_cast<int64_t>(frame.width) * picture.height;
    const int64_t least = 2;
    const int width =
        static_cast<int>(std::clamp(wide / picture.height, least, int64_t{frame.width}));
    const int height =
        static_cast<int>(std::clamp(high / picture.width, least, int64_t{frame.height}));
    const Rectangle size = EvenSized({0, 0, width, height});
    return {(frame.width - size.width) / 4 * 2, (frame.height - size.height) / 4 * 2, size.width,
            size.height};
}

void Fit(const Planes& picture, const Planes& frame)
{
    if (picture.width - picture.width % 2 == frame.width &&
        picture.height - picture.height % 2 == frame.height) {
        libyuv::I420Copy(picture.y, picture.stride, picture.u, picture.ColourStride(), picture.v,
                         picture.ColourStride(), frame.y, frame.stride, frame.u,
                         frame.ColourStride(), frame.v, frame.ColourStride(), frame.width,
                         frame.height);
        return;
    }
    const Planes part = frame.Part(FittedArea(picture, frame));
    libyuv::I420Rect(frame.y, frame.stride, frame.u, frame.ColourStride(), frame.v,
                     frame.ColourStride(), 0, 0, frame.width, frame.height, black, noColour,
                     noColour);
    libyuv::I420Scale(picture.y, picture.stride, picture.u, picture.ColourStride(), picture.v,
                      picture.ColourStride(), picture.width, picture.height, part.y, part.stride,
                      part.u, part.ColourStride(), part.v, part.ColourStride(), part.width,
                      part.height, libyuv::kFilterBox);
}

} // namespace

int PixelBytes(PixelOrder order)
{
    return order == PixelOrder::PackedBgr || order == PixelOrder::PackedRgb ? 3 : 4;
}

Rectangle UprightSize(int width, int height, int transform)
{
    return transform % 2 == 0 ? Rectangle{0, 0, width, height} : Rectangle{0, 0, height, width};
}

void FrameFitter::Write(const SourcePicture& source, uint8_t* frame, int width, int height)
{
    const Planes target = PlanesAt(frame, width, height);
    const SourcePicture picture = WithoutMirror(Narrowed(source, m_narrow));
    if (picture.transform == 0 && picture.width - picture.width % 2 == width &&
        picture.height - picture.height % 2 == height) {
        Convert(picture, target);
        return;
    }
    Planes upright = PlanesIn(m_delivered, picture.width, picture.height);
    Convert(picture, upright);
    if (picture.transform != 0) {
        const Planes delivered = upright;
        const Rectangle size = UprightSize(picture.width, picture.height, picture.transform);
        upright = PlanesIn(m_upright, size.width, size.height);
        Turn(delivered, picture.transform, upright);
    }
    Fit(upright, target);
}

} // namespace tool
