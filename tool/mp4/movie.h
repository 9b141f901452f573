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
    int64_t trimmedStart = 0;  // microseconds at the start that the edit list hides
    // Start and end in microseconds of the movie; nothing if the headers do not say.
    std::optional<int64_t> start;
    std::optional<int64_t> end;
};

struct Movie
{
    bool fragmented = false;         // then the duration is unknown
    std::optional<int64_t> duration; // microseconds, more than 0
    std::vector<MovieTrack> tracks;
};

// More than the headers of an ordinary file; sample tables are not read.
constexpr uint64_t movieAllowance = 8192;

// Returns nothing if the file is not an MP4, is damaged, or has anything unusual in its headers.
std::optional<Movie> ReadMovie(FrugalFile& file);

// The duration line and the last line of `ffmpeg -i PATH`. Returns nothing if only ffmpeg can tell.
std::optional<std::string> ProbeText(const std::string& path);

} // namespace tool
