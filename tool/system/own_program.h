#pragma once

#include <string>

namespace tool {

// The full path of this program, or an empty string if the system does not tell it.
std::string OwnProgram();

} // namespace tool
