#include "tool/ffmpeg/features.h"

#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/system/numbers.h"
#include "tool/system/own_files.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <sys/stat.h>

namespace tool {
namespace {

constexpr const char* rememberedIn = "ffmpeg";
constexpr std::chrono::seconds patience{2}; // measured: 90 ms

// The number at the start of the text, which is removed from it.
std::optional<int> TakeNumber(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const std::string_view digits = text.substr(0, text.find_first_not_of("0123456789"));
    text.remove_prefix(digits.size());
    return ParseNumber<int>(digits);
}

// Of a line such as "libavcodec     59. 37.100 / 59. 37.100": the versions it was built with and
// runs with.
std::optional<LibraryVersion> FindLibrary(std::string_view text, std::string_view name)
{
    const size_t at = text.find(name);
    if (at == std::string_view::npos) {
        return std::nullopt;
    }
    text.remove_prefix(at + name.size());
    const auto major = TakeNumber(text);
    if (!major || !text.starts_with('.')) {
        return std::nullopt;
    }
    text.remove_prefix(1);
    const auto minor = TakeNumber(text);
    return minor ? std::optional(LibraryVersion{*major, *minor}) : std::nullopt;
}

// A text that changes when the program does. Empty if there is no such program.
std::string MarkOf(const std::string& program)
{
    struct stat info = {};
    if (stat(program.c_str(), &info) != 0) {
        return {};
    }
    std::string mark;
    for (const auto number : {int64_t{info.st_size}, int64_t{info.st_mtime}, int64_t{info.st_ctime},
                              static_cast<int64_t>(info.st_ino)}) {
        mark += std::to_string(number) + " ";
    }
    return mark + program + "\n";
}

// Asks the program only if the answer is not remembered.
std::string VersionText(const std::string& program)
{
    const std::filesystem::path directory = OwnDirectory();
    const std::string mark = MarkOf(program);
    if (!directory.empty() && !mark.empty()) {
        const auto known = ReadText(directory / rememberedIn);
        if (known && known->starts_with(mark)) {
            return known->substr(mark.size());
        }
    }
    std::string answer =
        Ask(program, {"-version"}, {.stream = Stream::Output, .patience = patience});
    if (!directory.empty() && !mark.empty() && ParseVersion(answer)) {
        ReplaceText(directory / rememberedIn, mark + answer);
    }
    return answer;
}

} // namespace

std::optional<FfmpegVersion> ParseVersion(std::string_view text)
{
    const auto codec = FindLibrary(text, "\nlibavcodec ");
    const auto format = FindLibrary(text, "\nlibavformat ");
    return codec && format ? std::optional(FfmpegVersion{*codec, *format}) : std::nullopt;
}

FfmpegFeatures FeaturesOf(const FfmpegVersion& version)
{
    const bool since44 = version.format >= LibraryVersion{58, 76};
    const bool since51 = version.codec >= LibraryVersion{59, 37};
    return {since44, since51, since51, since44};
}

FfmpegFeatures FeaturesOf(const std::string& program)
{
    const auto version = ParseVersion(VersionText(program));
    return version ? FeaturesOf(*version) : FfmpegFeatures();
}

} // namespace tool
