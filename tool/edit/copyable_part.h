// Decides which movies can be joined by copying, from their headers alone.
#pragma once

#include "tool/mp4/fragments.h"
#include "tool/mp4/movie.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

struct SourceFile;

// What has to be the same in two tracks so that one can follow the other: the decoder's set-up
// (size, frame rate, pixel format, profile, sample rate and channels are all in it) and how it is
// shown.
struct TrackFormat
{
    TrackKind kind = TrackKind::Other;
    std::string codec;
    std::string configuration;
    uint32_t timescale = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    bool operator==(const TrackFormat&) const = default;
};

// Parts of the same format can be joined by copying.
struct CopyablePart
{
    std::vector<TrackFormat> format; // in the order of the file
    bool fragmented = false;
    // From the first moment to the end of the video, or of the sound if there is none: the next
    // part begins there.
    uint64_t ticks = 0;
    uint32_t timescale = 0; // ticks per second
    bool hasVideo = false;
    bool hasAudio = false;
};

// Returns nothing if the movie has to be encoded again, or only ffmpeg can tell: other codecs than
// H.264, H.265 and AAC, rotation, parts hidden by an edit list, sound that ends long before or
// after the video. `fragments`: those of a fragmented movie.
std::optional<CopyablePart> DescribePart(const Movie& movie,
                                         const std::optional<FragmentedMovie>& fragments);

// The same, from the file.
std::optional<CopyablePart> ReadCopyablePart(const SourceFile& source);

} // namespace tool
