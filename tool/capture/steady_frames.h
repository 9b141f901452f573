#pragma once

#include <string>

namespace tool {

// The filter for pictures that come with the times they were taken at, slightly off the frame grid
// of the output. `rate`: the output's, in frames per second.
std::string SteadyFrames(const std::string& rate);

} // namespace tool
