// The parts of a command line for ffmpeg.
#pragma once

#include "tool/command/command.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace tool {

// An input with the options before it. The last section of a command has no input; its options are
// the output's, followed by the name of the output.
struct Section
{
    Arguments options;
    std::optional<std::string> input;
};

// Never empty.
std::vector<Section> SplitSections(const Arguments& arguments);

// The argument after the option.
std::optional<std::string> ValueOf(const Arguments& options, std::string_view name);

// The number of inputs among the arguments.
size_t InputsIn(const Arguments& arguments);

void Append(Arguments& target, const Arguments& more);

// Appends an input with its options, or the output's options.
void Append(Arguments& target, const Section& section);

} // namespace tool
