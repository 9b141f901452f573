// The tables of an MP4 track's samples.
#pragma once

#include "tool/movie_pieces.h"

#include <string>
#include <vector>

namespace tool {

// Appends the boxes that tell the samples' times, kinds, sizes and places; false when a time is too
// large for them. Half written then.
bool AppendSampleTables(std::string& bytes, const std::vector<Sample>& samples);

} // namespace tool
