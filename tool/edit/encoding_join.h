// Joins parts that do not fit together, by encoding them again.
#pragma once

#include "tool/edit/part_description.h"

#include <string>
#include <vector>

namespace tool {

// ffmpeg's arguments, without the output, for one movie of all parts with the size and rate of the
// first picture and the rate and channels of the first sound. Other pictures are centred on black;
// missing sound becomes silence. `urls`: the inputs, as many as `parts`.
std::vector<std::string> EncodingJoin(const std::vector<std::string>& urls,
                                      const std::vector<PartDescription>& parts);

} // namespace tool
