#include "tool/screen/portal/restore_token.h"

#include "tool/system/environment.h"
#include "tool/system/own_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>

namespace tool {
namespace {

namespace fs = std::filesystem;

// Empty if the user has no such directory.
fs::path StateDirectory()
{
    fs::path directory = Variable("XDG_STATE_HOME");
    if (!directory.is_absolute()) {
        directory = fs::path(Variable("HOME")) / ".local/state";
    }
    return directory.is_absolute() ? directory / "lumenfold-recorder" : fs::path();
}

std::string NameFor(const Rectangle& screen)
{
    return "screen-" + std::to_string(screen.width) + "x" + std::to_string(screen.height) + "-" +
           std::to_string(screen.x) + "-" + std::to_string(screen.y);
}

} // namespace

bool IsRestoreToken(const std::string& text)
{
    constexpr std::string_view form = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
    return std::ranges::equal(text, form, [](char letter, char place) {
        return place == '-' ? letter == '-'
                            : std::isxdigit(static_cast<unsigned char>(letter)) != 0;
    });
}

std::string RecallToken(const Rectangle& screen)
{
    const fs::path directory = StateDirectory();
    std::string token;
    if (!directory.empty()) {
        token = ReadText(directory / NameFor(screen)).value_or("");
    }
    while (token.ends_with('\n')) {
        token.pop_back();
    }
    return IsRestoreToken(token) ? token : std::string();
}

void StoreToken(const Rectangle& screen, const std::string& token)
{
    const fs::path directory = StateDirectory();
    if (directory.empty()) {
        return;
    }
    const fs::path file = directory / NameFor(screen);
    std::error_code ignored;
    if (!IsRestoreToken(token)) {
        if (fs::is_regular_file(file, ignored)) {
            fs::remove(file, ignored);
        }
        return;
    }
    fs::create_directories(directory.parent_path(), ignored);
    mkdir(directory.c_str(), S_IRWXU);
    ReplaceText(file, token + "\n");
}

} // namespace tool
