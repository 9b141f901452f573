#pragma once

#include <cstdint>
#include <optional>

namespace tool {

// The bytes that an unprivileged user can still write to the file system of this open folder.
// Returns nothing if it does not tell.
std::optional<uint64_t> FreeBytes(int folder);

} // namespace tool
