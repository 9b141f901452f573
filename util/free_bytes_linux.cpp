#include "util/free_bytes.h"

#include <sys/statvfs.h>

std::optional<unsigned long long> FreeBytesAt(const char* path)
{
    struct statvfs status = {};
    if (statvfs(path, &status) != 0) {
        return std::nullopt;
    }
    return static_cast<unsigned long long>(status.f_bavail) * status.f_frsize;
}
