#pragma once

// Stands in for the system header of the same name where there is none.

#include <array>
#include <cstdint>
#include <cstring>
#include <linux/limits.h>
#include <unistd.h>

inline int _NSGetExecutablePath(char* buffer, uint32_t* size)
{
    std::array<char, PATH_MAX> path{};
    const auto length =
        static_cast<uint32_t>(readlink("/proc/self/exe", path.data(), path.size() - 1));
    if (buffer == nullptr || *size <= length) {
        *size = length + 1;
        return -1;
    }
    std::memcpy(buffer, path.data(), length + 1);
    return 0;
}
