#include "tool/command/arguments.h"

#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>
#include <string_view>

namespace tool {
namespace {

// The maximum distance of sync samples in frames: just under 2 s at 29.97 fps.
constexpr const char* keyFrameDistance = "59";

// 90 frames are 3 s. They are uncompressed, so more would take gigabytes of memory.
constexpr const char* screenQueue = "90";
constexpr const char* soundQueue = "1024";

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

// An input with the options before it or, without an input, the output's options and file.
struct Section
{
    Arguments options;
    std::optional<std::string> input;
};

std::vector<Section> SplitSections(const Arguments& arguments)
{
    std::vector<Section> sections(1);
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "-i" && i + 1 < arguments.size()) {
            sections.back().input = arguments[++i];
            sections.emplace_back();
        } else {
            sections.back().options.push_back(arguments[i]);
        }
    }
    return sections;
}

std::optional<std::string> ValueOf(const Arguments& options, std::string_view name)
{
    for (size_t i = 0; i + 1 < options.size(); ++i) {
        if (options[i] == name) {
            return options[i + 1];
        }
    }
    return std::nullopt;
}

bool IsCapture(const Section& section)
{
    return section.input && ValueOf(section.options, "-f") == "avfoundation";
}

std::optional<int> ParseIndex(std::string_view text)
{
    int value = 0;
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    if (result.ec != std::errc() || result.ptr != end || value < 0) {
        return std::nullopt;
    }
    return value;
}

// The name after -i, "S" or "S:A": screen index and audio device index, both decimal. "none" for A
// means no sound.
struct CaptureName
{
    int screen = 0;
    std::optional<int> audio;
};

// Returns nothing if the name is malformed.
std::optional<CaptureName> ParseCaptureName(const std::string& name)
{
    const std::string_view text = name;
    const size_t colon = text.find(':');
    const auto screen = ParseIndex(text.substr(0, colon));
    if (!screen) {
        return std::nullopt;
    }
    CaptureName result{*screen, std::nullopt};
    if (colon != std::string_view::npos && text.substr(colon + 1) != "none") {
        result.audio = ParseIndex(text.substr(colon + 1));
        if (!result.audio) {
            return std::nullopt;
        }
    }
    return result;
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

void Append(Arguments& target, const Arguments& more)
{
    target.insert(target.end(), more.begin(), more.end());
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

// Prepends the value to the option's existing one, or adds the option at the front.
void PrependFilter(Arguments& options, std::initializer_list<std::string_view> names,
                   const std::string& filter)
{
    for (size_t i = 0; i + 1 < options.size(); ++i) {
        if (IsOneOf(names, options[i])) {
            options[i + 1] = filter + "," + options[i + 1];
            return;
        }
    }
    options.insert(options.begin(), {std::string(*names.begin()), filter});
}

// x11grab stamps each frame with the time it was taken, slightly off the output's frame grid.
// Rounding each time drops and duplicates frames when the times are near the middle between two
// grid points. So a frame goes to the grid point after its predecessor's, unless it is off by more
// than 0.7 of a frame; then its time counts. `fps` fills the gaps.
std::string SteadyFrames(const std::string& rate)
{
    const std::string due = "T*" + rate;
    return "setpts='if(eq(N,0),st(1,round(" + due + ")),if(lt(abs(" + due +
           "-ld(1)-1),0.7),st(1,ld(1)+1),st(1,max(ld(1),round(" + due + ")))))/" + rate +
           "/TB',fps=" + rate;
}

// Raw frames are not probed. As for the sound, the name must not start with "pipe:".
Arguments PictureInput(int pipe, const std::string& size, const std::string& rate)
{
    return {"-probesize",
            "32",
            "-analyzeduration",
            "1",
            "-thread_queue_size",
            screenQueue,
            "-f",
            "rawvideo",
            "-pixel_format",
            "yuv420p",
            "-video_size",
            size,
            "-framerate",
            rate,
            "-skip_initial_bytes",
            std::to_string(skippedBytes),
            "-i",
            "/dev/fd/" + std::to_string(pipe)};
}

Arguments ScreenInput(const CapturePlan& plan, const std::string& rate)
{
    const std::string size =
        std::to_string(plan.area.width) + "x" + std::to_string(plan.area.height);
    if (plan.screenPipe) {
        return PictureInput(*plan.screenPipe, size, rate);
    }
    return {"-thread_queue_size",
            screenQueue,
            "-f",
            "x11grab",
            "-framerate",
            rate,
            "-video_size",
            size,
            "-draw_mouse",
            "1",
            "-grab_x",
            std::to_string(plan.area.x),
            "-grab_y",
            std::to_string(plan.area.y),
            "-i",
            plan.display};
}

// Not "pipe:N": with such a name ffmpeg stops reading its standard input and so never sees "q".
Arguments SoundInput(int pipe, int rate)
{
    return {"-probesize",
            "32",
            "-analyzeduration",
            "1",
            "-thread_queue_size",
            soundQueue,
            "-f",
            "s16le",
            "-ar",
            std::to_string(rate),
            "-ac",
            "2",
            "-i",
            "/dev/fd/" + std::to_string(pipe)};
}

// Two fragments per second, and one for the first frame alone, because the file is empty until
// then. The header is written with it: only then does ffmpeg know when sound and picture start.
Arguments Pieces()
{
    return {"-movflags",         "+frag_keyframe+delay_moov+default_base_moof",
            "-frag_duration",    "500000",
            "-force_key_frames", "expr:eq(n,1)"};
}

Arguments OutputOptions(Arguments options, const CapturePlan& plan, const std::string& rate)
{
    const auto async = std::find(options.begin(), options.end(), "-async");
    if (async != options.end() && async + 1 != options.end()) {
        const std::string amount = *(async + 1);
        options.erase(async, async + 2);
        if (plan.soundPipe) {
            PrependFilter(options, {"-af", "-filter:a"}, "aresample=async=" + amount);
        }
    }
    if (!ValueOf(options, "-flush_packets")) {
        // Write to the file at once: the recorder shows its size, and a still screen would not fill
        // ffmpeg's buffer for minutes.
        options.insert(options.begin(), {"-flush_packets", "1"});
    }
    if (!ValueOf(options, "-g")) {
        options.insert(options.begin(), {"-g", keyFrameDistance});
    }
    if (!plan.screenPipe && !ValueOf(options, "-filter_complex")) {
        PrependFilter(options, {"-vf", "-filter:v"}, SteadyFrames(rate));
    }
    return options;
}

// The capture rate is the output's rate; any other would drop or duplicate frames.
std::string RateOf(const std::vector<Section>& sections)
{
    if (const auto rate = ValueOf(sections.back().options, "-r")) {
        return *rate;
    }
    const auto capture = std::find_if(sections.begin(), sections.end(), IsCapture);
    return capture == sections.end() ? "30"
                                     : ValueOf(capture->options, "-framerate").value_or("30");
}

} // namespace

Request ReadRequest(const Arguments& arguments)
{
    Request request;
    bool first = true;
    for (const Section& section : SplitSections(arguments)) {
        if (!IsCapture(section)) {
            continue;
        }
        const auto list = ValueOf(section.options, "-list_devices");
        if (list == "true" || list == "1") {
            request.kind = RequestKind::ListDevices;
            return request;
        }
        const auto name = ParseCaptureName(*section.input);
        if (!name) {
            request.kind = RequestKind::Malformed;
            request.error = "\"" + *section.input +
                            "\" is not a capture device: SCREEN or SCREEN:AUDIO, both numbers, "
                            "is expected";
            return request;
        }
        request.kind = RequestKind::Capture;
        if (first) {
            request.screen = name->screen;
            first = false;
        }
        // A second input names the same screen again; only its sound counts.
        if (name->audio && !IsOneOf(request.audio, *name->audio)) {
            request.audio.push_back(*name->audio);
        }
    }
    return request;
}

bool RecordsInPieces(const Arguments& arguments)
{
    const Section output = SplitSections(arguments).back();
    constexpr std::string_view ending = ".mp4";
    const std::string_view name =
        output.options.empty() ? std::string_view() : output.options.back();
    return name.size() > ending.size() && name.substr(name.size() - ending.size()) == ending &&
           !ValueOf(output.options, "-f") && !ValueOf(output.options, "-movflags");
}

int SampleRate(const Arguments& arguments)
{
    constexpr int usual = 48000;
    const auto text = ValueOf(SplitSections(arguments).back().options, "-ar");
    const int rate = text ? ParseIndex(*text).value_or(usual) : usual;
    return rate >= 8000 && rate <= 192000 ? rate : usual;
}

std::string FrameRate(const Arguments& arguments)
{
    return RateOf(SplitSections(arguments));
}

bool WantsYuv420(const Arguments& arguments)
{
    return ValueOf(SplitSections(arguments).back().options, "-pix_fmt") == "yuv420p";
}

Arguments TranslatePassThrough(const Arguments& arguments)
{
    Arguments result;
    for (const Section& section : SplitSections(arguments)) {
        std::transform(section.options.begin(), section.options.end(), std::back_inserter(result),
                       RenamedOption);
        if (section.input) {
            Append(result, {"-i", *section.input});
        }
    }
    return result;
}

Arguments TranslateCapture(const Arguments& arguments, const CapturePlan& plan)
{
    const std::vector<Section> sections = SplitSections(arguments);
    const std::string rate = RateOf(sections);
    Arguments result;
    if (plan.knowsStatsPeriod) {
        // The recorder types "q" after output: print progress ten times a second instead of twice.
        result = {"-stats_period", "0.1"};
    }
    bool first = true;
    for (const Section& section : sections) {
        if (!section.input) {
            if (RecordsInPieces(arguments)) {
                Append(result, Pieces());
            }
            Append(result, OutputOptions(section.options, plan, rate));
        } else if (!IsCapture(section)) {
            Append(result, section.options);
            Append(result, {"-i", *section.input});
        } else if (first) {
            first = false;
            Append(result, WithoutCaptureOptions(section.options));
            Append(result, ScreenInput(plan, rate));
            if (plan.soundPipe) {
                Append(result, SoundInput(*plan.soundPipe, SampleRate(arguments)));
            }
        }
    }
    return TranslatePassThrough(result);
}

} // namespace tool
