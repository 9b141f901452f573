#include "util/free_bytes.h"

#include <sys/mount.h>

// Not statvfs(): that counts blocks in 32 bits, which is wrong above 16 TiB.
std::optional<unsigned long long> FreeBytesAt(const char* path)
{
    struct statfs status = {};
    if (statfs(path, &status) != 0) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(status.f_bavail) *
           static_cast<unsigned long long>(status.f_bsize);
}
