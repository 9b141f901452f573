// What an ffmpeg understands.
#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

struct LibraryVersion
{
    int major = 0;
    int minor = 0;
    auto operator<=>(const LibraryVersion&) const = default;
};

// Builds from a repository have no release number, but the libraries always have theirs.
struct FfmpegVersion
{
    LibraryVersion codec;  // libavcodec
    LibraryVersion format; // libavformat
    bool operator==(const FfmpegVersion&) const = default;
};

// Parses the output of `ffmpeg -version`. Returns nothing if a library is missing in it.
std::optional<FfmpegVersion> ParseVersion(std::string_view text);

struct FfmpegFeatures
{
    bool statsPeriod = false; // -stats_period, since 4.4
    bool noiseDrop = false;   // expressions in the bitstream filter "noise", since 5.1
    bool inputSync = false;   // -isync for an input, since 5.1
    bool plainMix = false;    // normalize=0 of the filter "amix", since 4.4
};

FfmpegFeatures FeaturesOf(const FfmpegVersion& version);

// The features of the program. The answer to `-version` is remembered for as long as the program's
// path, size and time stay the same. A program that does not answer has none.
FfmpegFeatures FeaturesOf(const std::string& program);

} // namespace tool
