// Reads the samples of a fragmented movie, which a recording is until it is settled. A "piece" is a
// fragment: one moof and its mdat.
#pragma once

#include "tool/mp4/boxes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tool {

struct Sample
{
    uint64_t place = 0; // offset in the file
    uint64_t time = 0;  // decode time in the track's ticks
    uint32_t size = 0;  // bytes
    uint32_t duration = 0;
    int32_t shift = 0; // composition offset, in the same ticks
    bool key = false;  // sync sample
};

// Used where a fragment or a sample does not say otherwise.
struct SampleDefaults
{
    uint32_t duration = 0;
    uint32_t size = 0;
    uint32_t flags = 0;
};

struct PiecedTrack
{
    uint32_t id = 0;
    SampleDefaults defaults;
    std::vector<Sample> samples; // in order of time
};

struct PiecedMovie
{
    Box movie;          // "moov"
    uint64_t place = 0; // offset of that box's header, eight bytes before its content
    std::vector<PiecedTrack> tracks;
};

// Returns nothing if the file is not a fragmented movie or contains anything a recording does not.
// Of an incomplete fragment it returns the samples that are there.
std::optional<PiecedMovie> ReadPieces(FrugalFile& file);

// The size of the complete fragments of a movie that ends with an incomplete one. Returns nothing
// if the movie is complete, not fragmented, or ends within its first fragment.
std::optional<uint64_t> WholePart(FrugalFile& file);

} // namespace tool
