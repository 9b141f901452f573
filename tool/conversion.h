// The recorder's command that turns one movie into an intermediate, before several are joined.
#pragma once

#include "tool/arguments.h"
#include "tool/movie.h"

#include <optional>
#include <string>

namespace tool {

struct Conversion
{
    std::string source;
    std::string destination;
};

// Nothing when it is any other command.
std::optional<Conversion> ReadConversion(const Arguments& arguments);

// How an intermediate is written. The streams are copied in every case.
enum class Intermediate {
    AsAsked,         // H.264 and AAC, or not known
    TransportStream, // another codec that a transport stream holds as well
    Movie,           // what a transport stream cannot hold: turning, hidden parts, other codecs
};

Intermediate ChooseIntermediate(const std::optional<Movie>& movie);

// The command for it.
Arguments TranslateConversion(const Conversion& conversion, Intermediate intermediate);

} // namespace tool
