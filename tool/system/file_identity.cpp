#include "tool/system/file_identity.h"

#include "tool/system/last_change.h"

#include <sys/stat.h>

namespace tool {

std::optional<FileIdentity> IdentityOf(int descriptor)
{
    struct stat info = {};
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    const timespec changed = LastChange(info);
    return FileIdentity{static_cast<uint64_t>(info.st_dev), info.st_ino,
                        static_cast<uint64_t>(info.st_size), changed.tv_sec, changed.tv_nsec};
}

} // namespace tool
