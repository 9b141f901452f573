// The preparation of a movie for a join: it is copied to an intermediate.
#pragma once

#include "tool/command/command.h"
#include "tool/mp4/movie.h"

#include <optional>

namespace tool {

// How an intermediate is written. The streams are always copied.
enum class Intermediate {
    AsAsked,         // H.264 and AAC, or unknown
    TransportStream, // another codec that mpegts supports
    Movie,           // not possible in mpegts: rotation, hidden parts, other codecs
};

Intermediate ChooseIntermediate(const std::optional<Movie>& movie);

// The ffmpeg command for it.
Arguments ConversionCommand(const Convert& convert, Intermediate intermediate);

// Becomes ffmpeg. Returns only on failure: an exit code, after a message.
int RunConversion(const std::string& ffmpeg, const Convert& convert);

} // namespace tool
