#include "tool/system/rename_free.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

bool LinkToFree(int folder, const std::string& from, const std::string& to)
{
    if (linkat(folder, from.c_str(), folder, to.c_str(), 0) == 0) {
        unlinkat(folder, from.c_str(), 0);
        return true;
    }
    if (errno == EEXIST) {
        return false;
    }
    struct stat taken = {};
    if (fstatat(folder, to.c_str(), &taken, AT_SYMLINK_NOFOLLOW) == 0) {
        errno = EEXIST;
        return false;
    }
    return errno == ENOENT && renameat(folder, from.c_str(), folder, to.c_str()) == 0;
}

} // namespace tool
