// One track of an MP4 file.
#pragma once

#include "tool/mp4/boxes.h"
#include "tool/mp4/movie.h"

namespace tool {

// Converts `count` ticks, `scale` per second, to microseconds, rounded like ffmpeg. Returns nothing
// if the result is not a plausible time.
std::optional<int64_t> Microseconds(uint64_t count, uint64_t scale);

// Whether the descriptive box is small and has nothing that changes where the sound begins.
bool IsPlainDescription(FrugalFile& file, const Box& box);

// Reads a "trak" box. `movieScale`: the movie's ticks per second. Returns nothing if it is damaged.
std::optional<MovieTrack> ReadTrack(FrugalFile& file, const Box& box, uint64_t movieScale);

} // namespace tool
