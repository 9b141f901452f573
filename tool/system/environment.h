#pragma once

#include <string>

namespace tool {

// The value of an environment variable, or an empty string if it is not set.
std::string Variable(const char* name);

} // namespace tool
