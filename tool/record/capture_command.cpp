#include "tool/record/capture_command.h"

#include "tool/command/sections.h"
#include "tool/system/one_of.h"

#include <algorithm>
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

// Removes -async, which newer ffmpegs do not have, and returns the filter that does the same. Empty
// if the command does not have it.
std::string TakeAsync(Arguments& options)
{
    const auto async = std::find(options.begin(), options.end(), "-async");
    if (async == options.end() || async + 1 == options.end()) {
        return {};
    }
    std::string filter = "aresample=async=" + *(async + 1);
    options.erase(async, async + 2);
    return filter;
}

Arguments OutputOptions(const Record& record, const CaptureInputs& capture)
{
    Arguments options = record.output;
    const std::string async = TakeAsync(options);
    if (!capture.sounds.empty() && !async.empty()) {
        PrependFilter(options, {"-af", "-filter:a"}, async);
    }
    if (!ValueOf(options, "-flush_packets")) {
        // Write to the file at once: the recorder shows its size, and a still screen would not fill
        // ffmpeg's buffer for minutes.
        options.insert(options.begin(), {"-flush_packets", "1"});
    }
    if (!ValueOf(options, "-g")) {
        options.insert(options.begin(), {"-g", keyFrameDistance});
    }
    if (!capture.pictureFilter.empty() && !ValueOf(options, "-filter_complex")) {
        PrependFilter(options, {"-vf", "-filter:v"}, capture.pictureFilter);
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
    if (plan.knowsStatsPeriod) {
        // The recorder types "q" after output: print progress ten times a second instead of twice.
        result = {"-stats_period", "0.1"};
    }
    Append(result, record.before);
    for (const Arguments& input : plan.capture.inputs) {
        Append(result, input);
    }
    Append(result, record.after);
    Append(result, OutputOptions(record, plan.capture));
    if (plan.file) {
        Append(result, {"-f", "mp4", "-y", *plan.file});
    } else if (!record.file.empty()) {
        result.push_back(record.file);
    }
    return result;
}

} // namespace tool
