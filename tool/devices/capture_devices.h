// What can be recorded on this machine.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// Prints the list of screens and sound devices on standard error, and remembers which number stands
// for which device. Returns the exit code, 1 as ffmpeg's.
int PrintListing();

// The sources that these numbers of the list stand for. Returns nothing, after a message, if a
// number is not in the list.
std::optional<std::vector<std::string>> SourcesFor(const std::vector<int>& numbers);

} // namespace tool
