#pragma once

#include <cstdint>
#include <optional>

namespace tool {

// Tells whether a file is still the same one with the same content.
struct FileIdentity
{
    uint64_t device = 0;
    uint64_t number = 0; // inode
    uint64_t size = 0;   // bytes
    int64_t seconds = 0; // of the last change, since 1970
    int64_t nanoseconds = 0;
    bool operator==(const FileIdentity&) const = default;
};

// Returns nothing if the descriptor is closed or no regular file.
std::optional<FileIdentity> IdentityOf(int descriptor);

} // namespace tool
