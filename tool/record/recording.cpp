#include "tool/record/recording.h"

#include "tool/devices/capture_devices.h"
#include "tool/ffmpeg/features.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/record/capture_command.h"
#include "tool/record/early_keys.h"
#include "tool/record/end_signal.h"
#include "tool/record/keeper.h"
#include "tool/record/recording_time.h"
#include "tool/record/screen_feeder.h"
#include "tool/record/sound_feeder.h"
#include "tool/screen/screen.h"
#include "tool/system/complaint.h"
#include "tool/system/environment.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <sys/prctl.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::chrono::seconds untilFirstPicture{20}; // measured: 130 ms, 4 s on a busy machine

// Returns the frame pipe, or nothing if ffmpeg should grab the screen itself.
std::optional<int> StartPictures(const CapturePlan& plan, const Record& record,
                                 RecordingTime* start)
{
    const auto rate = ParseRate(record.rate);
    if (!rate || !record.isYuv420) {
        return std::nullopt;
    }
    return StartScreenFeeder({plan.area, *rate, start});
}

// Returns nothing, after a message, if there is no such screen.
std::optional<Rectangle> ScreenArea(int screen)
{
    const Screens screens = ReadScreens();
    if (screens.areas.empty()) {
        Complain(screens.noneReason);
        return std::nullopt;
    }
    if (static_cast<size_t>(screen) >= screens.areas.size()) {
        Complain("there is no screen " + std::to_string(screen) + ", the display has " +
                 std::to_string(screens.areas.size()));
        return std::nullopt;
    }
    return EvenSized(screens.areas[static_cast<size_t>(screen)]);
}

} // namespace

int RunRecording(const std::string& ffmpeg, const Record& record, pid_t recorder)
{
    CapturePlan plan;
    plan.display = Variable("DISPLAY");
    const auto area = ScreenArea(record.screen);
    const auto sources = area ? SourcesFor(record.sounds) : std::nullopt;
    if (!area || !sources) {
        return failed;
    }
    plan.area = *area;
    plan.knowsStatsPeriod = FeaturesOf(ffmpeg).statsPeriod;
    // If the recorder dies, nothing else would stop ffmpeg. This signal makes it finish the file,
    // and survives the exec.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != recorder) {
        return failed; // it has died already
    }
    const bool passesKeys = HoldEarlyKeys(STDIN_FILENO, record.file, untilFirstPicture);
    const bool keepsFile = record.fragmented && StartKeeper(record.file, !passesKeys);
    RecordingTime* start = RecordingTime::Make();
    plan.screenPipe = StartPictures(plan, record, start);
    if (!sources->empty()) {
        // A screen feeder that was given up exits early. It must not end the sound.
        const int pipe =
            StartSoundFeeder({*sources, record.sampleRate}, plan.screenPipe ? start : nullptr);
        if (pipe < 0) {
            return Complain(std::string("no sound can be read: ") + std::strerror(errno));
        }
        plan.soundPipe = pipe;
    }
    if (passesKeys || keepsFile) {
        KeepEndSignals();
    } else {
        std::signal(SIGHUP, SIG_IGN); // nothing handles it; PR_SET_PDEATHSIG still works
    }
    return Become(ffmpeg, CaptureCommand(record, plan));
}

} // namespace tool
