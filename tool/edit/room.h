#pragma once

#include <cstdint>
#include <string>

namespace tool {

// Whether the file system of this open folder has room for so many bytes: a sentence without its
// full stop if it has not, or empty if it has or cannot tell.
std::string LackOfRoom(int folder, uint64_t bytes);

} // namespace tool
