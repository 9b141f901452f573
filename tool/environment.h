#pragma once

#include <string>

namespace tool {

// An environment variable's value; empty when it is not set.
std::string Variable(const char* name);

} // namespace tool
