#include "tool/system/free_bytes.h"

#include <sys/statvfs.h>

namespace tool {

std::optional<uint64_t> FreeBytes(int folder)
{
    struct statvfs volume = {};
    if (fstatvfs(folder, &volume) != 0 || volume.f_blocks == 0 || volume.f_frsize == 0) {
        return std::nullopt;
    }
    return uint64_t{volume.f_bavail} * volume.f_frsize;
}

} // namespace tool
