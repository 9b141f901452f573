#include "tool/system/file_identity.h"

#include <sys/stat.h>

namespace tool {

std::optional<FileIdentity> IdentityOf(int descriptor)
{
    struct stat info = {};
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) {
        return std::nullopt;
    }
    return FileIdentity{info.st_dev, info.st_ino, static_cast<uint64_t>(info.st_size),
                        info.st_mtim.tv_sec, info.st_mtim.tv_nsec};
}

} // namespace tool
