// What the headers of an MP4 file say, as far as it is beyond doubt.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

class FrugalFile;

enum class TrackKind { Picture, Sound, Other };

struct MovieTrack
{
    TrackKind kind = TrackKind::Other;
    std::string codec;   // four letters, "aac " for AAC; empty when in doubt
    bool turned = false; // shown rotated or mirrored
    bool pieced = false; // the edit list has several parts, or another speed
    int64_t hidden = 0;  // microseconds of its beginning that the edit list leaves out
    // When it begins, in microseconds of the movie; nothing when that takes more than the headers.
    std::optional<int64_t> start;
    std::optional<int64_t> end; // likewise
};

struct Movie
{
    bool fragmented = false;         // then nothing is known about the duration
    std::optional<int64_t> duration; // microseconds, more than 0
    std::vector<MovieTrack> tracks;
};

// More than any honest file needs; tables of samples are not read.
constexpr uint64_t movieAllowance = 8192;

// Nothing when the file is no MP4, is damaged, or has anything in it that makes the answer
// doubtful.
std::optional<Movie> ReadMovie(FrugalFile& file);

// What `ffmpeg -i PATH` prints about the duration and how it ends; nothing whenever ffmpeg itself
// has to be asked.
std::optional<std::string> ProbeText(const std::string& path);

} // namespace tool
