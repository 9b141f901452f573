// The samples of a movie that was written in pieces ("fragmented"), as a recording is.
#pragma once

#include "tool/boxes.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace tool {

struct Sample
{
    uint64_t place = 0; // in the file
    uint64_t time = 0;  // when it is decoded, in the track's ticks
    uint32_t size = 0;  // bytes
    uint32_t duration = 0;
    int32_t shift = 0; // from when it is decoded to when it is shown
    bool key = false;
};

// What a piece, or a sample in it, does not say itself.
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
    std::vector<Sample> samples; // their times never go back
};

struct PiecedMovie
{
    Box movie;          // "moov"
    uint64_t place = 0; // of that box's header, eight bytes before what is in it
    std::vector<PiecedTrack> tracks;
};

// Nothing when the file is no movie in pieces, or has anything in it that a recording has not. Of
// a piece that was not written to its end the samples are told that are there.
std::optional<PiecedMovie> ReadPieces(FrugalFile& file);

// How many bytes of a movie in pieces were written whole, when half a piece lies behind them.
// Nothing when the file is whole, no movie in pieces, or torn before its first piece ended.
std::optional<uint64_t> WholePart(FrugalFile& file);

} // namespace tool
