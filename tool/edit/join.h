// The recorder's command that joins intermediates, and the one for parts that do not fit together.
#pragma once

#include "tool/command/arguments.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct Join
{
    std::vector<std::string> parts;
    std::string destination;
};

// Returns nothing if this is a different command. A part whose name contains the separator is found
// by checking which files exist.
std::optional<Join> ReadJoin(const Arguments& arguments);

// Whether the parts can be joined by copying, as the recorder asks.
bool CanBeCopied(const Join& join);

// The recorder's command, which copies. Each part's sound is slightly longer than its picture; with
// `dropsOverlap` (ffmpeg 5.1 and later) the overlapping packets are dropped, so that the difference
// does not add up.
Arguments CopyingJoin(const Arguments& arguments, bool dropsOverlap);

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
Arguments EncodingJoin(const Join& join, const std::vector<PartDescription>& parts);

} // namespace tool
