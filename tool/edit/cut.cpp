#include "tool/edit/cut.h"

#include <charconv>
#include <string_view>

namespace tool {
namespace {

std::optional<int64_t> Seconds(std::string_view text)
{
    int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end ? std::optional(value) : std::nullopt;
}

} // namespace

std::optional<Cut> ReadCut(const Arguments& arguments)
{
    if (arguments.size() != 9 || arguments[0] != "-i" || arguments[2] != "-ss" ||
        arguments[4] != "-t" || arguments[6] != "-codec" || arguments[7] != "copy") {
        return std::nullopt;
    }
    const auto start = Seconds(arguments[3]);
    const auto length = Seconds(arguments[5]);
    if (!start || !length || *start < 0 || *length <= 0) {
        return std::nullopt;
    }
    return Cut{arguments[1], *start, *length, arguments[8]};
}

Arguments TranslateCut(const Cut& cut)
{
    return {"-ss",          std::to_string(cut.start),  "-i",     cut.source,
            "-t",           std::to_string(cut.length), "-codec", "copy",
            cut.destination};
}

} // namespace tool
