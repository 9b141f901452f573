#include "tool/ffmpeg/ffmpeg_program.h"

#include "tool/system/ask_child.h"
#include "tool/system/complaint.h"
#include "tool/system/environment.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace tool {

namespace fs = std::filesystem;

namespace {

// Replaces this process with the program. Returns only on failure, with errno.
void Execute(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    execv(program.c_str(), pointers.data());
}

} // namespace

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

std::string NoFfmpegReason()
{
    const std::string chosen = Variable("LUMENFOLD_FFMPEG");
    if (chosen.empty()) {
        return "no ffmpeg is installed: neither beside this program nor in PATH";
    }
    return "LUMENFOLD_FFMPEG names " + chosen +
           (IsAbsolute(chosen) ? ", which is not an executable file"
                               : ", which is not a full path");
}

int Become(const std::string& program, const std::vector<std::string>& arguments)
{
    Execute(program, arguments);
    return Complain(program + " cannot be run: " + std::strerror(errno), noProgram);
}

std::string Ask(const std::string& program, const std::vector<std::string>& arguments,
                Stream stream, std::chrono::milliseconds patience)
{
    const auto run = [&](int answer) {
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nothing, STDIN_FILENO);
        dup2(stream == Stream::Output ? answer : nothing, STDOUT_FILENO);
        dup2(stream == Stream::Error ? answer : nothing, STDERR_FILENO);
        Execute(program, arguments);
    };
    return AskChild(run, patience);
}

} // namespace tool
