// The sample description of an MP4 track: how its samples are coded.
#pragma once

#include "tool/mp4/boxes.h"
#include "tool/mp4/movie.h"

#include <string>

namespace tool {

struct SampleDescription
{
    std::string codec; // four characters, "aac " for AAC; empty if unsure
    std::string configuration;
};

// Reads a "stsd" box. Both texts are empty if it is damaged or has several entries.
SampleDescription ReadSampleDescription(FrugalFile& file, const Box& box, TrackKind kind);

} // namespace tool
