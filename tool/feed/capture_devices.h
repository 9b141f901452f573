// What can be recorded in this session.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The sources that these numbers of the list stand for. Returns nothing, after a message, if a
// number is not in the list.
std::optional<std::vector<std::string>> SourcesFor(const std::vector<int>& numbers);

} // namespace tool
