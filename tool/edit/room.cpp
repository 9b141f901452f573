#include "tool/edit/room.h"

#include <algorithm>
#include <cmath>
#include <sys/statvfs.h>

namespace tool {
namespace {

std::string Megabytes(double bytes)
{
    return std::to_string(static_cast<int64_t>(std::ceil(bytes / 1e6))) + " MB";
}

} // namespace

std::string LackOfRoom(int folder, uint64_t bytes)
{
    struct statvfs volume = {};
    if (fstatvfs(folder, &volume) != 0 || volume.f_blocks == 0 || volume.f_frsize == 0 ||
        bytes / volume.f_frsize < volume.f_bavail) {
        return {};
    }
    const double left = static_cast<double>(volume.f_bavail) * static_cast<double>(volume.f_frsize);
    return "the disk has no room for the result, which needs " +
           Megabytes(std::max(static_cast<double>(bytes), 1.0)) + ": " + Megabytes(left) +
           " are free";
}

} // namespace tool
