#include "tool/system/sync_data.h"

#include <fcntl.h>
#include <unistd.h>

namespace tool {

// fsync() alone leaves it to the disk in which order it writes. Not every file system has the other
// two.
bool SyncData(int descriptor)
{
    return fcntl(descriptor, F_BARRIERFSYNC) == 0 || SyncToDisk(descriptor);
}

bool SyncToDisk(int descriptor)
{
    return fcntl(descriptor, F_FULLFSYNC) == 0 || fsync(descriptor) == 0;
}

} // namespace tool
