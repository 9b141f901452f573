#include "tool/command/command.h"

#include "tool/command/sections.h"
#include "tool/system/numbers.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>

namespace tool {
namespace {

// Options of a capture. Each has a value.
constexpr std::array<std::string_view, 12> captureOptions = {
    "-f",
    "-framerate",
    "-list_devices",
    "-pixel_format",
    "-video_size",
    "-capture_cursor",
    "-capture_mouse_clicks",
    "-capture_raw_data",
    "-drop_late_frames",
    "-video_device_index",
    "-audio_device_index",
    "-thread_queue_size",
};

bool IsCapture(const Section& section)
{
    return section.input && ValueOf(section.options, "-f") == "avfoundation";
}

bool IsList(const Section& capture)
{
    const auto value = ValueOf(capture.options, "-list_devices");
    return value == "true" || value == "1";
}

std::optional<int> ParseIndex(std::string_view text)
{
    const auto index = ParseNumber<int>(text);
    return index && *index >= 0 ? index : std::nullopt;
}

// The name after -i, "S" or "S:A": screen index and audio device index, both decimal. "none" for A
// means no sound.
struct CaptureName
{
    int screen = 0;
    std::optional<int> sound;
};

// Returns nothing if the name is malformed.
std::optional<CaptureName> ParseCaptureName(std::string_view text)
{
    const size_t colon = text.find(':');
    const auto screen = ParseIndex(text.substr(0, colon));
    if (!screen) {
        return std::nullopt;
    }
    CaptureName name{*screen, std::nullopt};
    if (colon != std::string_view::npos && text.substr(colon + 1) != "none") {
        name.sound = ParseIndex(text.substr(colon + 1));
        if (!name.sound) {
            return std::nullopt;
        }
    }
    return name;
}

Arguments WithoutCaptureOptions(const Arguments& options)
{
    Arguments kept;
    for (size_t i = 0; i < options.size(); ++i) {
        if (IsOneOf(captureOptions, options[i])) {
            ++i;
        } else {
            kept.push_back(options[i]);
        }
    }
    return kept;
}

std::string RenamedOption(const std::string& option)
{
    if (option == "-vbsf") {
        return "-bsf:v";
    }
    if (option == "-absf") {
        return "-bsf:a";
    }
    return option;
}

std::vector<Section> WithRenamedOptions(std::vector<Section> sections)
{
    for (Section& section : sections) {
        std::transform(section.options.begin(), section.options.end(), section.options.begin(),
                       RenamedOption);
    }
    return sections;
}

void ReadOutput(const Arguments& options, Record& record)
{
    record.output = options;
    if (!record.output.empty()) {
        record.file = record.output.back();
        record.output.pop_back();
    }
    record.rate = ValueOf(options, "-r").value_or(record.rate);
    const int sampleRate = ParseIndex(ValueOf(options, "-ar").value_or("")).value_or(0);
    if (sampleRate >= 8000 && sampleRate <= 192000) {
        record.sampleRate = sampleRate;
    }
    record.isYuv420 = ValueOf(options, "-pix_fmt") == "yuv420p";
    constexpr std::string_view ending = ".mp4";
    record.fragmented = record.file.size() > ending.size() && record.file.ends_with(ending) &&
                        !ValueOf(options, "-f") && !ValueOf(options, "-movflags");
}

// Reads the inputs that are captures. A second one names the same screen again; only its sound
// counts.
Command ReadRecord(const std::vector<Section>& sections)
{
    Record record;
    bool first = true;
    for (const Section& section : sections) {
        if (!section.input) {
            ReadOutput(section.options, record);
            continue;
        }
        if (!IsCapture(section)) {
            Append(first ? record.before : record.after, section);
            continue;
        }
        const auto name = ParseCaptureName(*section.input);
        if (!name) {
            return Malformed{"\"" + *section.input +
                             "\" is not a capture device: SCREEN or SCREEN:AUDIO, both numbers, "
                             "is expected"};
        }
        if (first) {
            first = false;
            record.screen = name->screen;
            record.captureRate = ValueOf(section.options, "-framerate").value_or(record.rate);
            record.rate = record.captureRate;
            Append(record.before, WithoutCaptureOptions(section.options));
        }
        if (name->sound && !IsOneOf(record.sounds, *name->sound)) {
            record.sounds.push_back(*name->sound);
        }
    }
    return record;
}

std::optional<Cut> ReadCut(const Arguments& arguments)
{
    if (arguments.size() != 9 || arguments[0] != "-i" || arguments[2] != "-ss" ||
        arguments[4] != "-t" || arguments[6] != "-codec" || arguments[7] != "copy") {
        return std::nullopt;
    }
    const auto start = ParseNumber(arguments[3]);
    const auto length = ParseNumber(arguments[5]);
    if (!start || !length) {
        return std::nullopt; // ffmpeg refuses it and says why
    }
    return Cut{arguments[1], *start, *length, arguments[8]};
}

// Whether this is one input, these words, and an output.
bool IsOneInputWith(const Arguments& words, const Arguments& arguments)
{
    return arguments.size() == words.size() + 3 && arguments[0] == "-i" &&
           std::equal(words.begin(), words.end(), arguments.begin() + 2);
}

std::optional<Convert> ReadConvert(const Arguments& arguments)
{
    if (!IsOneInputWith({"-vcodec", "copy", "-acodec", "copy", "-vbsf", "h264_mp4toannexb"},
                        arguments)) {
        return std::nullopt;
    }
    return Convert{arguments[1], arguments.back()};
}

std::optional<Join> ReadJoin(const Arguments& arguments)
{
    constexpr std::string_view protocol = "concat:";
    if (!IsOneInputWith({"-acodec", "copy", "-vcodec", "copy", "-absf", "aac_adtstoasc"},
                        arguments) ||
        !arguments[1].starts_with(protocol)) {
        return std::nullopt;
    }
    return Join{arguments[1].substr(protocol.size()), arguments.back()};
}

} // namespace

Command ReadCommand(const Arguments& arguments)
{
    const std::vector<Section> sections = WithRenamedOptions(SplitSections(arguments));
    if (std::any_of(sections.begin(), sections.end(),
                    [](const Section& one) { return IsCapture(one) && IsList(one); })) {
        return List{};
    }
    if (std::any_of(sections.begin(), sections.end(), IsCapture)) {
        return ReadRecord(sections);
    }
    if (arguments.size() == 2 && arguments[0] == "-i") {
        return Probe{arguments[1]};
    }
    if (const auto cut = ReadCut(arguments)) {
        return *cut;
    }
    if (const auto convert = ReadConvert(arguments)) {
        return *convert;
    }
    if (const auto join = ReadJoin(arguments)) {
        return *join;
    }
    PassOn rest;
    for (const Section& section : sections) {
        Append(rest.arguments, section);
    }
    return rest;
}

} // namespace tool
