// The recorder's command that joins intermediates, and the one for parts that do not fit together.
#pragma once

#include "tool/command/command.h"

#include <string>
#include <vector>

namespace tool {

// The names in the list. One that contains the separator is found by checking which files exist.
std::vector<std::string> SplitList(const std::string& list);

// Whether the parts can be joined by copying, as the recorder asks.
bool CanBeCopied(const std::vector<std::string>& parts);

// The command that copies. Each part's sound is slightly longer than its picture; with
// `dropsOverlap` (ffmpeg 5.1 and later) the overlapping packets are dropped, so that the difference
// does not add up.
Arguments CopyingJoin(const Join& join, bool dropsOverlap);

// What ffmpeg reports about one input.
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

// The command that re-encodes the parts into one movie with the size and rate of the first picture
// and the rate and channels of the first sound. Other pictures are centred on black; missing sound
// becomes silence.
Arguments EncodingJoin(const std::vector<std::string>& names,
                       const std::vector<PartDescription>& parts, const std::string& destination);

// Copies parts that fit together and re-encodes others. Returns the exit code.
int RunJoin(const std::string& ffmpeg, const Join& join);

} // namespace tool
