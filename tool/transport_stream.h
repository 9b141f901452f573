// What decides whether two transport streams can be played one after the other as one.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// Two streams with the same values decode alike: size, picture rate, pixel format and profile stand
// in the picture's parameter sets; sample rate, channels and profile in the sound's header.
struct StreamShape
{
    uint8_t pictureType = 0;   // as in the stream's table; 0: no picture
    std::string parameterSets; // of the picture, byte for byte
    uint8_t soundType = 0;     // 0: no sound
    uint16_t soundHeader = 0;
    bool operator==(const StreamShape&) const = default;
};

// Reads only the beginning. Nothing for other files, for other codecs than H.264, H.265 and AAC,
// and when there are several tracks of a kind.
std::optional<StreamShape> ReadTransportStream(const std::string& path);

// Whether all of these can be joined as they are.
bool FitTogether(const std::vector<std::string>& paths);

} // namespace tool
