#include "tool/avfoundation/av_inputs.h"

#include "tool/capture/steady_frames.h"
#include "tool/command/sections.h"

namespace tool {
namespace {

// Read by a thread of its own: AVFoundation keeps one picture only, and replaces it. 90 frames are
// 3 s, and up to 700 MB on a screen of 2880x1800.
constexpr const char* screenQueue = "90";
constexpr const char* soundQueue = "1024";

// Sizes may be odd on scaled screens; yuv420p H.264 needs even ones.
constexpr const char* evenSize = "crop=trunc(iw/2)*2:trunc(ih/2)*2:0:0,";

// Fills what AVFoundation has lost with silence, and stretches by up to 1000 samples a second: each
// device has a clock of its own. It resamples from the start ("res"): when ffmpeg begins with that
// later, it forgets the time, and the sound is 0.2 s off from then on.
constexpr const char* followClock = "aresample=async=1000:first_pts=0:flags=res";

Arguments ScreenInput(const Record& record, const AvPlan& plan)
{
    std::string name = std::to_string(plan.screen);
    if (!plan.sounds.empty()) {
        name += AvSoundName(plan.sounds.front());
    }
    return {"-thread_queue_size", screenQueue, "-f",         "avfoundation",
            "-capture_cursor",    "1",         "-framerate", record.captureRate,
            "-pixel_format",      "nv12",      "-i",         name};
}

// Its times count from those of the screen's input: both are the system's.
Arguments SoundInput(size_t sound, size_t screenInput, bool knowsInputSync)
{
    Arguments input;
    if (knowsInputSync) {
        input = {"-isync", std::to_string(screenInput)};
    }
    Append(input,
           {"-thread_queue_size", soundQueue, "-f", "avfoundation", "-i", AvSoundName(sound)});
    return input;
}

} // namespace

std::string AvSoundName(size_t sound)
{
    return std::string(":").append(std::to_string(sound));
}

CaptureInputs AvInputs(const Record& record, const AvPlan& plan)
{
    CaptureInputs result;
    result.inputs.push_back(ScreenInput(record, plan));
    result.pictureFilter = evenSize + SteadyFrames(record.rate);
    result.soundFilter = followClock;
    for (size_t i = 0; i < plan.sounds.size(); ++i) {
        result.sounds.push_back(i);
        if (i > 0) {
            result.inputs.push_back(
                SoundInput(plan.sounds[i], InputsIn(record.before), plan.knowsInputSync));
        }
    }
    return result;
}

} // namespace tool
