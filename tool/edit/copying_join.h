// Joins parts that fit together, by copying them.
#pragma once

#include "tool/edit/copyable_part.h"

#include <string>
#include <vector>

namespace tool {

// ffmpeg's arguments, without the output, for one movie of all parts, each beginning where the
// video before it ends. `urls`: the inputs, as many as `parts`, of characters that need no quotes.
// Each part's sound is slightly longer than its video; with `dropsOverlap` the overlapping packets
// are dropped. Otherwise ffmpeg squeezes them together, which takes no time either but is heard.
std::vector<std::string> CopyingJoin(const std::vector<std::string>& urls,
                                     const std::vector<CopyablePart>& parts, bool dropsOverlap);

// Where part `index` begins in the join, in microseconds; behind the last part: the length.
int64_t BeginOfPart(const std::vector<CopyablePart>& parts, size_t index);

} // namespace tool
