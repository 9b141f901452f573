// Reads the headers of an MP4 file, as far as they are unambiguous.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

class FrugalFile;

enum class TrackKind { Video, Audio, Other };

struct MovieTrack
{
    TrackKind kind = TrackKind::Other;
    std::string codec;         // four characters, "aac " for AAC; empty if unsure
    bool transformed = false;  // shown rotated or mirrored
    bool unusualEdits = false; // the edit list has several edits or another speed
    int64_t trimmedStart = 0;  // microseconds at the start that the edit list leaves out
    int64_t emptyStart = 0;    // microseconds before the start in which it shows nothing
    // Start and end in microseconds of the movie; nothing if the headers do not say.
    std::optional<int64_t> start;
    std::optional<int64_t> end;

    uint32_t id = 0;
    uint32_t timescale = 0;     // ticks per second, at least 1
    uint64_t mediaDuration = 0; // ticks; 0 in a fragmented movie
    uint64_t trimmedTicks = 0;  // `trimmedStart` in ticks, exactly
    // How the decoder is set up, of H.264 and H.265 the content of "avcC" or "hvcC", of AAC the
    // DecoderSpecificInfo. Tracks with the same bytes decode alike. Empty if damaged, large or of
    // another codec.
    std::string configuration;
    uint32_t width = 0; // as shown, in 1/65536 of a pixel
    uint32_t height = 0;
};

struct Movie
{
    bool fragmented = false;         // then the duration is unknown
    std::optional<int64_t> duration; // microseconds, more than 0
    std::vector<MovieTrack> tracks;
};

// More than the headers of an ordinary file; sample tables are not read.
constexpr uint64_t movieAllowance = 16384;

// Returns nothing if the file is not an MP4, is damaged, or has anything unusual in its headers.
std::optional<Movie> ReadMovie(FrugalFile& file);

// The duration line and the last line of `ffmpeg -i PATH`. Returns nothing if only ffmpeg can tell.
std::optional<std::string> ProbeText(const std::string& path);

} // namespace tool
