#include "tool/system/rename_free.h"

#include <cerrno>
#include <cstdio>

namespace tool {

bool RenameToFree(int folder, const std::string& from, const std::string& to)
{
    if (renameatx_np(folder, from.c_str(), folder, to.c_str(), RENAME_EXCL) == 0) {
        return true;
    }
    return (errno == ENOTSUP || errno == EINVAL) && LinkToFree(folder, from, to);
}

} // namespace tool
