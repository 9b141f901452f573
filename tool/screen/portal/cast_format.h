// What is agreed with the desktop about the pictures of a PipeWire stream.
#pragma once

#include "tool/screen/frame_fitter.h"

#include <array>
#include <cstdint>
#include <optional>
#include <spa/pod/pod.h>

namespace tool {

struct CastFormat
{
    int width = 0;
    int height = 0;
    PixelOrder order = PixelOrder::Bgr;
    bool operator==(const CastFormat&) const = default;
};

// Parameters for PipeWire, in memory of their own.
class CastParameters
{
public:
    // The formats that can be read: four bytes a pixel, without a modifier. That means memory
    // rather than a graphics card's buffers.
    const spa_pod* OfferedFormats();
    // What the buffers have to have, once a format is agreed.
    std::array<const spa_pod*, 4> Buffers();

private:
    alignas(8) std::array<uint8_t, 2048> m_memory{};
};

// The agreed format. Returns nothing if it is none of those offered.
std::optional<CastFormat> ReadFormat(const spa_pod* format);

} // namespace tool
