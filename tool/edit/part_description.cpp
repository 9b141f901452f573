#include "tool/edit/part_description.h"

#include "tool/system/numbers.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cmath>
#include <string_view>

namespace tool {
namespace {

// Used if ffmpeg reports no rate or an absurd one.
constexpr const char* usualRate = "30";

// Limits of what can be encoded here: pixels, and samples per second.
constexpr int largestSide = 16384;
constexpr double highestRate = 1000000;

// Used if ffmpeg's name for the channels is not valid in a filter.
constexpr std::string_view usualChannels = "stereo";
constexpr std::array<unsigned char, 5> layoutSigns = {'.', '(', ')', '+', ' '};

// The number at the start of the text, or 0 if there is none.
double ToNumber(std::string_view text)
{
    return TakeDecimal(text).value_or(0);
}

// The last number before the unit, such as 25 before " fps", or empty if there is none.
std::string_view Before(std::string_view line, std::string_view unit)
{
    const size_t end = line.find(unit);
    if (end == std::string_view::npos) {
        return {};
    }
    const size_t begin = line.rfind(' ', end - 1);
    return line.substr(begin + 1, end - begin - 1);
}

// Digits, optionally with a decimal point and more digits.
bool IsDecimal(std::string_view text)
{
    return text.find_first_not_of("0123456789.") == std::string_view::npos &&
           std::count(text.begin(), text.end(), '.') <= 1 && !text.starts_with('.') &&
           !text.ends_with('.');
}

// Recovers the exact rate; ffmpeg prints rates rounded to two digits.
std::string ExactRate(std::string_view text)
{
    for (const int whole : {24, 30, 48, 60, 120}) {
        if (std::abs(ToNumber(text) - whole / 1.001) < 0.006) {
            return std::to_string(whole * 1000) + "/1001";
        }
    }
    const double rate = ToNumber(text);
    const bool sensible = rate >= 1 && rate <= 240;
    return sensible && IsDecimal(text) ? std::string(text) : usualRate;
}

int Even(double size)
{
    return std::max(2, static_cast<int>(std::lround(size / 2)) * 2);
}

// Parses ", 320x240 [SAR 4:3 ...". Anything else leaves the part without a picture.
void ParsePicture(std::string_view line, PartDescription& part)
{
    for (size_t at = line.find(", "); at != std::string_view::npos; at = line.find(", ", at + 1)) {
        const std::string_view field = line.substr(at + 2);
        int width = 0;
        int height = 0;
        const auto first = std::from_chars(field.data(), field.data() + field.size(), width);
        if (first.ec != std::errc() || first.ptr == field.data() + field.size() ||
            *first.ptr != 'x' ||
            std::from_chars(first.ptr + 1, field.data() + field.size(), height).ec != std::errc() ||
            width < 1 || width > largestSide || height < 1 || height > largestSide) {
            continue;
        }
        double shape = 1;
        if (const size_t sar = field.find("[SAR "); sar != std::string_view::npos) {
            const std::string_view ratio = field.substr(sar + 5);
            const double tall =
                ToNumber(ratio.substr(std::min(ratio.find(':'), ratio.size() - 1) + 1));
            shape = tall > 0 && ToNumber(ratio) > 0 ? ToNumber(ratio) / tall : 1;
        }
        if (width * shape < 1 || width * shape > largestSide) {
            shape = 1;
        }
        part.width = Even(width * shape);
        part.height = Even(height);
        break;
    }
    const std::string_view rate = Before(line, " fps");
    part.rate = rate.empty() ? usualRate : ExactRate(rate);
}

// Parses "..., 48000 Hz, stereo, fltp, ...".
void ParseSound(std::string_view line, PartDescription& part)
{
    const double rate = ToNumber(Before(line, " Hz, "));
    if (rate < 1 || rate > highestRate) {
        return;
    }
    part.sampleRate = static_cast<int>(rate);
    const std::string_view rest = line.substr(line.find(" Hz, ") + 5);
    const std::string_view channels = rest.substr(0, rest.find(','));
    // Other characters would break out of their place in the filter graph.
    const bool plain = std::all_of(channels.begin(), channels.end(), [](unsigned char letter) {
        return letter < 0x80 && (std::isalnum(letter) != 0 || IsOneOf(layoutSigns, letter));
    });
    part.channels = plain && !channels.empty() ? channels : usualChannels;
}

double ParseDuration(std::string_view line)
{
    const std::string_view text = line.substr(line.find(": ") + 2);
    const double seconds = text.size() < 11
                               ? 0
                               : ToNumber(text.substr(0, 2)) * 3600 +
                                     ToNumber(text.substr(3, 2)) * 60 + ToNumber(text.substr(6, 5));
    return std::max(seconds, 0.0);
}

// Whether the line says that the picture is shown lying on its side.
bool IsTurned(std::string_view line)
{
    constexpr std::array<std::string_view, 2> labels = {"displaymatrix: rotation of ",
                                                        "Display Matrix: rotation of "};
    return std::any_of(labels.begin(), labels.end(), [line](std::string_view label) {
        const double degrees =
            line.starts_with(label) ? std::abs(ToNumber(line.substr(label.size()))) : 0;
        return degrees > 45 && degrees < 135;
    });
}

void ParseLine(std::string_view line, PartDescription& part)
{
    // ffmpeg before 5 indents stream lines further.
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const bool isStream = line.starts_with("Stream #");
    if (line.starts_with("Duration: ")) {
        part.duration = ParseDuration(line);
    } else if (isStream && line.find(": Video: ") != std::string_view::npos && part.width == 0) {
        ParsePicture(line, part);
    } else if (isStream && line.find(": Audio: ") != std::string_view::npos &&
               part.sampleRate == 0) {
        ParseSound(line, part);
    } else if (IsTurned(line)) {
        std::swap(part.width, part.height);
    }
}

} // namespace

std::vector<PartDescription> ParseDescriptions(const std::string& text)
{
    std::vector<PartDescription> parts;
    for (size_t at = 0; at < text.size();) {
        const size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = std::string_view(text).substr(at, end - at);
        if (line.starts_with("Input #")) {
            parts.emplace_back();
        } else if (!parts.empty()) {
            ParseLine(line, parts.back());
        }
        at = end + 1;
    }
    return parts;
}

} // namespace tool
