// Writes the sample tables of an MP4 track.
#pragma once

#include "tool/mp4/fragments.h"

#include <string>
#include <vector>

namespace tool {

// Appends the tables of times, sync samples, sizes and chunk offsets. Returns false if a time is
// too large; then the tables are incomplete.
bool AppendSampleTables(std::string& bytes, const std::vector<Sample>& samples);

} // namespace tool
