// Reads the samples of a fragmented movie, which a recording is until it is settled.
#pragma once

#include "tool/mp4/boxes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tool {

struct Sample
{
    uint64_t offset = 0;     // in the file
    uint64_t decodeTime = 0; // in the track's time scale
    uint32_t size = 0;       // bytes
    uint32_t duration = 0;   // in the track's time scale
    int32_t compositionOffset = 0;
    bool isSync = false;
};

// Used where a fragment or a sample does not say otherwise.
struct SampleDefaults
{
    uint32_t duration = 0;
    uint32_t size = 0;
    uint32_t flags = 0;
};

struct FragmentedTrack
{
    uint32_t id = 0;
    SampleDefaults defaults;
    std::vector<Sample> samples; // in order of decode time
};

struct FragmentedMovie
{
    Box movieBox;                // "moov"
    uint64_t movieBoxOffset = 0; // of that box's header, eight bytes before its content
    std::vector<FragmentedTrack> tracks;
};

// Returns nothing if the file is not a fragmented movie or contains anything a recording does not.
// Of an incomplete fragment it returns the samples that are there.
std::optional<FragmentedMovie> ReadFragments(FrugalFile& file);

// The size of the complete fragments of a movie that ends with an incomplete one. Returns nothing
// if the movie is complete, not fragmented, or ends within its first fragment.
std::optional<uint64_t> CompleteSize(FrugalFile& file);

} // namespace tool
