#include "tool/system/own_program.h"

#include <cstdint>
#include <filesystem>
#include <mach-o/dyld.h>
#include <system_error>

namespace tool {

std::string OwnProgram()
{
    uint32_t size = 0;
    _NSGetExecutablePath(nullptr, &size); // only tells the size, with the zero at the end
    std::string path(size, '\0');
    if (_NSGetExecutablePath(path.data(), &size) != 0) {
        return {};
    }
    path.resize(path.find('\0'));
    // As it was started: perhaps through a link.
    std::error_code error;
    return std::filesystem::canonical(path, error).string();
}

} // namespace tool
