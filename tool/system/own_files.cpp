#include "tool/system/own_files.h"

#include "tool/system/environment.h"

#include <cerrno>
#include <fstream>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tool {

namespace fs = std::filesystem;

namespace {

bool IsOwnedByUs(const std::string& directory)
{
    struct stat info = {};
    return stat(directory.c_str(), &info) == 0 && info.st_uid == geteuid();
}

} // namespace

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

std::optional<std::string> ReadText(const fs::path& file)
{
    constexpr uintmax_t most = 1U << 20U;
    std::error_code error;
    const uintmax_t size = fs::is_regular_file(file, error) ? fs::file_size(file, error) : most + 1;
    if (error || size > most) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    std::string text(size, '\0');
    stream.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<size_t>(stream.gcount()));
    return stream.is_open() ? std::optional(text) : std::nullopt;
}

void ReplaceText(const fs::path& file, const std::string& text)
{
    const fs::path draft = file.string() + ".new-" + std::to_string(getpid());
    std::ofstream stream(draft, std::ios::binary | std::ios::trunc);
    std::error_code error;
    fs::permissions(draft, fs::perms::owner_read | fs::perms::owner_write, error);
    stream << text;
    stream.close();
    if (stream) {
        fs::rename(draft, file, error);
    }
    if (!stream || error) {
        fs::remove(draft, error);
    }
}

} // namespace tool
