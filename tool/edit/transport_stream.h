// Decides whether transport streams can be joined without re-encoding.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// Two streams with the same values decode alike: size, frame rate, pixel format and profile are in
// the picture's parameter sets; sample rate, channels and profile are in the sound's header.
struct StreamShape
{
    uint8_t pictureType = 0;   // stream type from the PMT; 0: no picture
    std::string parameterSets; // byte for byte
    uint8_t soundType = 0;     // 0: no sound
    uint16_t soundHeader = 0;
    bool operator==(const StreamShape&) const = default;
};

// Reads only the beginning. Returns nothing for other files, codecs other than H.264, H.265 and
// AAC, or several tracks of a kind.
std::optional<StreamShape> ReadTransportStream(const std::string& path);

// Whether all of these can be joined without re-encoding.
bool FitTogether(const std::vector<std::string>& paths);

} // namespace tool
