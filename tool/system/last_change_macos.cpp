#include "tool/system/last_change.h"

namespace tool {

timespec LastChange(const struct stat& file)
{
    return file.st_mtimespec;
}

} // namespace tool
