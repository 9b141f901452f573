#include "tool/record/capture_command.h"

#include "tool/command/sections.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <string_view>

namespace tool {
namespace {

// The maximum distance of sync samples in frames: just under 2 s at 29.97 fps.
constexpr const char* keyFrameDistance = "59";

// 90 frames are 3 s. They are uncompressed, so more would take gigabytes of memory.
constexpr const char* screenQueue = "90";
constexpr const char* soundQueue = "1024";

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
Arguments Fragments()
{
    return {"-movflags",         "+frag_keyframe+delay_moov+default_base_moof",
            "-frag_duration",    "500000",
            "-force_key_frames", "expr:eq(n,1)"};
}

Arguments OutputOptions(const Record& record, const CapturePlan& plan)
{
    Arguments options = record.output;
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
        PrependFilter(options, {"-vf", "-filter:v"}, SteadyFrames(record.rate));
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
    Append(result, ScreenInput(plan, record.rate));
    if (plan.soundPipe) {
        Append(result, SoundInput(*plan.soundPipe, record.sampleRate));
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
