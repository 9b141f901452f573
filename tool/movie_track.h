// One track of an MP4 file.
#pragma once

#include "tool/boxes.h"
#include "tool/movie.h"

namespace tool {

// `count` ticks of which `scale` make a second, in microseconds, rounded like ffmpeg does; nothing
// when that is no sensible time.
std::optional<int64_t> Microseconds(uint64_t count, uint64_t scale);

// Whether the descriptive box is small and free of what changes where the sound begins.
bool IsPlainDescription(FrugalFile& file, const Box& box);

// What the box "trak" holds; `movieScale` is the movie's ticks a second. Nothing when it is
// damaged.
std::optional<MovieTrack> ReadTrack(FrugalFile& file, const Box& box, uint64_t movieScale);

} // namespace tool
