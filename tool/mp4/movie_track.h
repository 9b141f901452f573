// One track of an MP4 file.
#pragma once

#include "tool/mp4/boxes.h"
#include "tool/mp4/movie.h"

namespace tool {

// Converts a time in ticks, `timescale` of them a second, to microseconds, rounded like ffmpeg.
// Returns nothing if the result is not a plausible time.
std::optional<int64_t> Microseconds(uint64_t ticks, uint64_t timescale);

// Whether this "udta" box is small and has nothing that changes where the sound begins.
bool IsPlainUserData(FrugalFile& file, const Box& box);

// Reads a "trak" box. Returns nothing if it is damaged.
std::optional<MovieTrack> ReadTrack(FrugalFile& file, const Box& box, uint64_t movieTimescale);

} // namespace tool
