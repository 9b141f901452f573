// What ffmpeg says about the parts of a join.
#pragma once

#include <string>
#include <vector>

namespace tool {

struct PartDescription
{
    int width = 0; // display size in pixels, even; 0: no picture
    int height = 0;
    std::string rate;     // frames per second, as a fraction or an integer
    int sampleRate = 0;   // 0: no sound
    std::string channels; // ffmpeg's name for the layout
    double duration = 0;  // seconds
    bool HasPicture() const { return width > 0 && height > 0; }
    bool HasSound() const { return sampleRate > 0; }
};

// Parses the output of `ffmpeg -i PART -i PART ...`. Returns fewer than the parts if ffmpeg could
// not read one.
std::vector<PartDescription> ParseDescriptions(const std::string& text);

} // namespace tool
