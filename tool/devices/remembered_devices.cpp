#include "tool/devices/remembered_devices.h"

#include "tool/system/environment.h"
#include "tool/system/own_files.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* firstWords = "server ";
constexpr const char* anyone = "devices";

std::string NameFor(pid_t process)
{
    return std::string(anyone) + "-" + std::to_string(process);
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
    const auto text = ReadText(file);
    return text ? ParseRemembered(*text, Variable("PULSE_SERVER")) : std::nullopt;
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
    ReplaceText(directory / NameFor(getppid()), text);
    ReplaceText(directory / anyone, text);
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
