// Checks the sample tables of an MP4 track without reading them.
#pragma once

#include "tool/mp4/boxes.h"

namespace tool {

// The tables of a track. Missing ones are empty boxes at 0.
struct SampleTableBoxes
{
    Box durations;          // "stts"
    Box compositionOffsets; // "ctts"
    Box syncSamples;        // "stss"
    Box sizes;              // "stsz"
    Box chunks;             // "stsc"
    Box chunkOffsets;       // "stco"
    Box longChunkOffsets;   // "co64"
};

// Whether there are samples where the file says, and the first one is a sync sample. Checks all
// tables, because players reject a file for an error in any of them.
bool BeginWithSyncSample(FrugalFile& file, const SampleTableBoxes& tables);

} // namespace tool
