#include "tool/system/sync_data.h"

#include <unistd.h>

namespace tool {

bool SyncData(int descriptor)
{
    return fdatasync(descriptor) == 0;
}

bool SyncToDisk(int descriptor)
{
    return SyncData(descriptor);
}

} // namespace tool
