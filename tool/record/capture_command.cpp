#include "tool/record/capture_command.h"

#include "tool/command/sections.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace tool {
namespace {

// The maximum distance of sync samples in frames: just under 2 s at 29.97 fps.
constexpr const char* keyFrameDistance = "59";

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

// Two fragments per second, and one for the first frame alone, because the file is empty until
// then. The header is written with it: only then does ffmpeg know when sound and picture start.
Arguments Fragments()
{
    return {"-movflags",         "+frag_keyframe+delay_moov+default_base_moof",
            "-frag_duration",    "500000",
            "-force_key_frames", "expr:eq(n,1)"};
}

// Removes the option and returns its value, or nothing if it is not there.
std::optional<std::string> TakeOption(Arguments& options, std::string_view name)
{
    const auto at = std::find(options.begin(), options.end(), name);
    if (at == options.end() || at + 1 == options.end()) {
        return std::nullopt;
    }
    std::string value = *(at + 1);
    options.erase(at, at + 2);
    return value;
}

// Makes one track of several sounds at their own volumes.
void MixSounds(Arguments& options, const CapturePlan& plan, size_t firstInput)
{
    const CaptureInputs& capture = plan.capture;
    std::string filtered;
    std::string mixed;
    for (const size_t sound : capture.sounds) {
        const std::string number = std::to_string(firstInput + sound);
        filtered.append("[").append(number).append(":a]");
        filtered.append(capture.soundFilter).append("[s").append(number).append("];");
        mixed.append("[s").append(number).append("]");
    }
    const std::string count = std::to_string(capture.sounds.size());
    std::string graph =
        filtered + mixed + "amix=inputs=" + count +
        (plan.features.plainMix ? ":normalize=0" : ":dropout_transition=0,volume=" + count) +
        ",alimiter";
    for (const char* name : {"-af", "-filter:a"}) {
        if (const auto own = TakeOption(options, name)) {
            graph += "," + *own;
        }
    }
    options.insert(options.begin(), {"-filter_complex", graph + "[sound]", "-map",
                                     std::to_string(firstInput) + ":v", "-map", "[sound]"});
}

// -async of the command becomes a filter: newer ffmpegs do not have it.
void FilterSound(Arguments& options, const CapturePlan& plan, size_t firstInput)
{
    const CaptureInputs& capture = plan.capture;
    const auto async = TakeOption(options, "-async");
    std::string filter = capture.soundFilter;
    if (filter.empty() && async) {
        filter = "aresample=async=" + *async;
    }
    if (capture.sounds.size() > 1 && !ValueOf(options, "-filter_complex")) {
        MixSounds(options, plan, firstInput);
    } else if (!capture.sounds.empty() && !filter.empty()) {
        PrependFilter(options, {"-af", "-filter:a"}, filter);
    }
}

Arguments OutputOptions(const Record& record, const CapturePlan& plan)
{
    Arguments options = record.output;
    if (!plan.capture.pictureFilter.empty() && !ValueOf(options, "-filter_complex")) {
        PrependFilter(options, {"-vf", "-filter:v"}, plan.capture.pictureFilter);
    }
    FilterSound(options, plan, InputsIn(record.before));
    if (!ValueOf(options, "-flush_packets")) {
        // Write to the file at once: the recorder shows its size, and a still screen would not fill
        // ffmpeg's buffer for minutes.
        options.insert(options.begin(), {"-flush_packets", "1"});
    }
    if (!ValueOf(options, "-g")) {
        options.insert(options.begin(), {"-g", keyFrameDistance});
    }
    if (record.fragmented) {
        Append(options, Fragments());
    }
    return options;
}

} // namespace

Arguments CaptureCommand(const Record& record, const CapturePlan& plan)
{
    Arguments result;
    if (plan.features.statsPeriod) {
        // The recorder types "q" after output: print progress ten times a second instead of twice.
        result = {"-stats_period", "0.1"};
    }
    Append(result, record.before);
    for (const Arguments& input : plan.capture.inputs) {
        Append(result, input);
    }
    Append(result, record.after);
    Append(result, OutputOptions(record, plan));
    if (plan.file) {
        Append(result, {"-f", "mp4", "-y", *plan.file});
    } else if (!record.file.empty()) {
        result.push_back(record.file);
    }
    return result;
}

} // namespace tool
