#include "tool/system/own_program.h"

#include <filesystem>
#include <system_error>

namespace tool {

std::string OwnProgram()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

} // namespace tool
