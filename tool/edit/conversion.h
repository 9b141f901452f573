// The recorder's command that copies a movie to an intermediate before a join.
#pragma once

#include "tool/command/arguments.h"
#include "tool/mp4/movie.h"

#include <optional>
#include <string>

namespace tool {

struct Conversion
{
    std::string source;
    std::string destination;
};

// Returns nothing if this is a different command.
std::optional<Conversion> ReadConversion(const Arguments& arguments);

// How an intermediate is written. The streams are always copied.
enum class Intermediate {
    AsAsked,         // H.264 and AAC, or unknown
    TransportStream, // another codec that mpegts supports
    Movie,           // not possible in mpegts: rotation, hidden parts, other codecs
};

Intermediate ChooseIntermediate(const std::optional<Movie>& movie);

// The ffmpeg command for it.
Arguments TranslateConversion(const Conversion& conversion, Intermediate intermediate);

} // namespace tool
