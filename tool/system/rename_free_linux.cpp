#include "tool/system/rename_free.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>

namespace tool {

bool RenameToFree(int folder, const std::string& from, const std::string& to)
{
    if (renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    return (errno == EINVAL || errno == ENOSYS) && LinkToFree(folder, from, to);
}

} // namespace tool
