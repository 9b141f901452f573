// The edit list of an MP4 track: which part of its media is shown, and when.
#pragma once

#include "tool/mp4/boxes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

// The usual edit list: optionally an empty edit, then the media from some time on at its own speed.
struct EditList
{
    uint64_t emptyDuration = 0;   // before anything is shown, in the movie's time scale
    uint64_t segmentDuration = 0; // of what is shown, in the movie's time scale; 0: all the media
    uint64_t mediaTime = 0;       // what is shown first, in the media's time scale
};

// Reads an "elst" box. Returns nothing if it is damaged or has other edits.
std::optional<EditList> ReadEditList(FrugalFile& file, const Box& box);

// Appends an "edts" box with this edit list.
void AppendEditList(std::string& bytes, const EditList& list);

} // namespace tool
