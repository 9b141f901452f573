// The recorder's command that joins the intermediates, and the one for those that do not fit
// together.
#pragma once

#include "tool/arguments.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

struct Join
{
    std::vector<std::string> parts;
    std::string destination;
};

// Nothing when it is any other command. A part whose name holds the bar that divides the parts is
// found by looking which files there are.
std::optional<Join> ReadJoin(const Arguments& arguments);

// Whether the parts can be copied one after the other, as the recorder asks for it.
bool CanBeCopied(const Join& join);

// The recorder's command for copying them. Each part's sound is a little longer than its picture;
// where `dropsOverlap` (ffmpeg 5.1 and later) what would be played beyond its time is left out, so
// that it does not add up.
Arguments CopyingJoin(const Arguments& arguments, bool dropsOverlap);

// What ffmpeg says about one input.
struct PartDescription
{
    int width = 0; // pixels as they are shown, even; 0: no picture
    int height = 0;
    std::string rate;     // pictures a second, as a fraction or a whole number
    int sampleRate = 0;   // 0: no sound
    std::string channels; // as ffmpeg names the layout
    double duration = 0;  // seconds
    bool HasPicture() const { return width > 0 && height > 0; }
    bool HasSound() const { return sampleRate > 0; }
};

// From what `ffmpeg -i PART -i PART ...` prints; fewer than the parts when it could not read one.
std::vector<PartDescription> ParseDescriptions(const std::string& text);

// The command that encodes them anew as one: the first picture's size and rate, the first sound's
// rate and channels; other pictures are centred on black, and where there is no sound there is
// silence.
Arguments EncodingJoin(const Join& join, const std::vector<PartDescription>& parts);

} // namespace tool
