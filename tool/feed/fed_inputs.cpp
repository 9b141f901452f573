#include "tool/feed/fed_inputs.h"

#include "tool/capture/steady_frames.h"
#include "tool/command/sections.h"
#include "tool/screen/x11/x11_grab.h"

namespace tool {
namespace {

// 90 frames are 3 s. They are uncompressed, so more would take gigabytes of memory.
constexpr const char* screenQueue = "90";
constexpr const char* soundQueue = "1024";

// Raw frames are not probed. As for the sound, the name must not start with "pipe:".
Arguments PictureInput(int pipe, const Rectangle& area, const std::string& rate)
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
            std::to_string(area.width) + "x" + std::to_string(area.height),
            "-framerate",
            rate,
            "-skip_initial_bytes",
            std::to_string(skippedBytes),
            "-i",
            "/dev/fd/" + std::to_string(pipe)};
}

Arguments GrabInput(const FeedPlan& plan, const std::string& rate)
{
    Arguments input = {"-thread_queue_size", screenQueue};
    Append(input, X11GrabInput(plan.display, plan.area, rate));
    return input;
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

} // namespace

CaptureInputs FedInputs(const Record& record, const FeedPlan& plan)
{
    CaptureInputs result;
    if (plan.screenPipe) {
        result.inputs.push_back(PictureInput(*plan.screenPipe, plan.area, record.rate));
        result.descriptors.push_back(*plan.screenPipe);
    } else {
        result.inputs.push_back(GrabInput(plan, record.rate));
        result.pictureFilter = SteadyFrames(record.rate);
    }
    if (plan.soundPipe) {
        result.sounds.push_back(result.inputs.size());
        result.inputs.push_back(SoundInput(*plan.soundPipe, record.sampleRate));
        result.descriptors.push_back(*plan.soundPipe);
    }
    return result;
}

} // namespace tool
