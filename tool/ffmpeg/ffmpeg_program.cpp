#include "tool/ffmpeg/ffmpeg_program.h"

#include "tool/system/ask_child.h"
#include "tool/system/environment.h"

#include <algorithm>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tool {

namespace fs = std::filesystem;

bool IsAbsolute(const std::string& path)
{
    return path.starts_with('/');
}

std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path)
{
    std::vector<std::string> places;
    if (!chosen.empty()) {
        if (IsAbsolute(chosen)) {
            places.push_back(chosen);
        }
        return places;
    }
    if (!ownDirectory.empty()) {
        places.push_back(ownDirectory + "/ffmpeg");
    }
    for (size_t at = 0; at <= path.size() && !path.empty();) {
        const size_t colon = std::min(path.find(':', at), path.size());
        const std::string directory = path.substr(at, colon - at);
        if (IsAbsolute(directory)) {
            places.push_back(directory + "/ffmpeg");
        }
        at = colon + 1;
    }
    return places;
}

std::string FirstRunnable(const std::vector<std::string>& places)
{
    for (const std::string& place : places) {
        std::error_code error;
        if (fs::is_regular_file(place, error) && access(place.c_str(), X_OK) == 0) {
            return place;
        }
    }
    return {};
}

std::string FindFfmpeg()
{
    std::error_code error;
    const fs::path own = fs::read_symlink("/proc/self/exe", error);
    return FirstRunnable(FfmpegPlaces(Variable("LUMENFOLD_FFMPEG"),
                                      error ? std::string() : own.parent_path().string(),
                                      Variable("PATH")));
}

bool KnowsOption(const std::string& program, const std::string& option)
{
    const int file = open(program.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    struct stat info = {};
    void* bytes = MAP_FAILED;
    size_t size = 0;
    if (fstat(file, &info) == 0 && info.st_size > 0) {
        size = static_cast<size_t>(info.st_size);
        bytes = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0);
    }
    close(file);
    if (bytes == MAP_FAILED) {
        return false;
    }
    // As a complete string, between two zero bytes.
    const std::string text = std::string(1, '\0') + option + std::string(1, '\0');
    const bool isScript = size >= 2 && std::memcmp(bytes, "#!", 2) == 0;
    const bool found = !isScript && memmem(bytes, size, text.data(), text.size()) != nullptr;
    munmap(bytes, size);
    return found;
}

void Become(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
}

std::string Ask(const std::string& program, const std::vector<std::string>& arguments)
{
    return AskChild([&](int output) {
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nothing, STDIN_FILENO);
        dup2(nothing, STDOUT_FILENO);
        dup2(output, STDERR_FILENO);
        Become(program, arguments);
    });
}

} // namespace tool
