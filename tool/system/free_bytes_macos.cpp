#include "tool/system/free_bytes.h"

#include <sys/mount.h>

namespace tool {

// Not fstatvfs(): that counts blocks in 32 bits, which is wrong above 16 TiB.
std::optional<uint64_t> FreeBytes(int folder)
{
    struct statfs volume = {};
    if (fstatfs(folder, &volume) != 0 || volume.f_blocks == 0 || volume.f_bsize == 0) {
        return std::nullopt;
    }
    return static_cast<uint64_t>(volume.f_bavail) * static_cast<uint64_t>(volume.f_bsize);
}

} // namespace tool
