#include "tool/edit/room.h"

#include "tool/system/free_bytes.h"

#include <algorithm>
#include <cmath>

namespace tool {
namespace {

std::string Megabytes(uint64_t bytes)
{
    return std::to_string(static_cast<int64_t>(std::ceil(static_cast<double>(bytes) / 1e6))) +
           " MB";
}

} // namespace

std::string LackOfRoom(int folder, uint64_t bytes)
{
    const auto left = FreeBytes(folder);
    if (!left || bytes < *left) {
        return {};
    }
    return "the disk has no room for the result, which needs " +
           Megabytes(std::max<uint64_t>(bytes, 1)) + ": " + Megabytes(*left) + " are free";
}

} // namespace tool
