#include "tool/devices/remembered_devices.h"

#include "tool/system/environment.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* firstWords = "server ";
constexpr const char* anyone = "devices";

bool IsOwnedByUs(const std::string& directory)
{
    struct stat info = {};
    return stat(directory.c_str(), &info) == 0 && info.st_uid == geteuid();
}

// A directory that nobody else can write to, or empty if there is none. Root recording for a user
// does not use the user's runtime directory, because the user could not write to what root creates
// there.
fs::path OwnDirectory()
{
    fs::path directory;
    if (const std::string runtime = Variable("XDG_RUNTIME_DIR");
        !runtime.empty() && IsOwnedByUs(runtime)) {
        directory = fs::path(runtime) / "lumenfold-recorder";
    } else {
        std::error_code error;
        directory = fs::temp_directory_path(error);
        if (error) {
            return {};
        }
        directory /= "lumenfold-recorder-" + std::to_string(geteuid());
    }
    if (mkdir(directory.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        return {};
    }
    struct stat info = {};
    const bool own = lstat(directory.c_str(), &info) == 0 && S_ISDIR(info.st_mode) &&
                     info.st_uid == geteuid() && (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    return own ? directory : fs::path();
}

std::string NameFor(pid_t process)
{
    return std::string(anyone) + "-" + std::to_string(process);
}

// Writes a new file and renames it, so that a reader sees either the old text or the new one.
void Replace(const fs::path& file, const std::string& text)
{
    const fs::path draft = file.string() + ".new-" + std::to_string(getpid());
    std::ofstream stream(draft, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    std::error_code error;
    if (stream) {
        fs::rename(draft, file, error);
    }
    if (!stream || error) {
        fs::remove(draft, error);
    }
}

void ForgetEndedPrograms(const fs::path& directory)
{
    std::error_code error;
    for (fs::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const size_t dash = name.rfind('-');
        pid_t process = 0;
        if (dash == std::string::npos ||
            std::from_chars(name.data() + dash + 1, name.data() + name.size(), process).ec !=
                std::errc()) {
            continue;
        }
        if (kill(process, 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            fs::remove(entry->path(), ignored);
        }
    }
}

std::optional<std::vector<std::string>> Read(const fs::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        return std::nullopt;
    }
    std::ostringstream text;
    text << stream.rdbuf();
    return ParseRemembered(text.str(), Variable("PULSE_SERVER"));
}

} // namespace

std::string RememberedText(const std::string& server, const std::vector<std::string>& sources)
{
    std::string text = firstWords + server + "\n";
    for (const std::string& source : sources) {
        text += source + "\n";
    }
    return text;
}

std::optional<std::vector<std::string>> ParseRemembered(const std::string& text,
                                                        const std::string& server)
{
    std::istringstream lines(text);
    std::string line;
    if (!text.ends_with('\n') || !std::getline(lines, line) || line != firstWords + server) {
        return std::nullopt;
    }
    std::vector<std::string> sources;
    while (std::getline(lines, line)) {
        sources.push_back(line);
    }
    return sources;
}

void RememberDevices(const std::vector<std::string>& sources)
{
    const fs::path directory = OwnDirectory();
    if (directory.empty()) {
        return;
    }
    const std::string text = RememberedText(Variable("PULSE_SERVER"), sources);
    ForgetEndedPrograms(directory);
    Replace(directory / NameFor(getppid()), text);
    Replace(directory / anyone, text);
}

std::optional<std::vector<std::string>> RecallDevices()
{
    const fs::path directory = OwnDirectory();
    if (directory.empty()) {
        return std::nullopt;
    }
    if (auto own = Read(directory / NameFor(getppid()))) {
        return own;
    }
    return Read(directory / anyone);
}

} // namespace tool
