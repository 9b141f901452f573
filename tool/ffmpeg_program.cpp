#include "tool/ffmpeg_program.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

namespace fs = std::filesystem;

std::string Variable(const char* name)
{
    const char* value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): one thread only
    return value == nullptr ? std::string() : value;
}

} // namespace

std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path)
{
    if (!chosen.empty()) {
        return {chosen};
    }
    std::vector<std::string> places;
    if (!ownDirectory.empty()) {
        places.push_back(ownDirectory + "/ffmpeg");
    }
    for (size_t at = 0; at <= path.size() && !path.empty();) {
        const size_t colon = std::min(path.find(':', at), path.size());
        // An empty entry is the working directory.
        const std::string directory = colon > at ? path.substr(at, colon - at) : ".";
        places.push_back(directory + "/ffmpeg");
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
    // As a text of its own: it ends with a zero byte and begins after one.
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

Answer Ask(const std::string& program, const std::vector<std::string>& arguments)
{
    constexpr int failed = 127;
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
        dup2(nothing, STDIN_FILENO);
        dup2(pipe[1], STDOUT_FILENO);
        dup2(pipe[1], STDERR_FILENO);
        Become(program, arguments);
        _exit(failed);
    }
    close(pipe[1]);
    Answer answer;
    std::array<char, 4096> bytes{};
    for (ssize_t got = 1; child > 0 && got != 0;) {
        got = read(pipe[0], bytes.data(), bytes.size());
        if (got < 0 && errno != EINTR) {
            break;
        }
        answer.text.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    close(pipe[0]);
    int status = 0;
    while (child > 0 && waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    answer.code = child > 0 && WIFEXITED(status) ? WEXITSTATUS(status) : failed;
    return answer;
}

} // namespace tool
