// Recordings whose pictures and sound `tool` delivers itself, through pipes.
#include "tool/capture/capture.h"
#include "tool/feed/capture_devices.h"
#include "tool/feed/fed_inputs.h"
#include "tool/feed/opening_watch.h"
#include "tool/feed/screen_feeder.h"
#include "tool/feed/sound_feeder.h"
#include "tool/screen/screen.h"
#include "tool/system/complaint.h"
#include "tool/system/environment.h"
#include "tool/system/pipe.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <optional>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

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
    return screens.areas[static_cast<size_t>(screen)];
}

// Returns whether there was nothing to tell.
bool Tell(const std::string& reason)
{
    if (!reason.empty()) {
        Complain(reason);
    }
    return reason.empty();
}

class FedCapture : public Capture
{
public:
    FedCapture(const Record& record, const Rectangle& area, RecordingTime& time)
        : m_record(record),
          m_plan{Variable("DISPLAY"), EvenSized(area), std::nullopt},
          m_time(time)
    {
    }

    bool PreparePictures(const Rectangle& area);
    bool PrepareSound(const std::vector<std::string>& sources);

    CaptureInputs Inputs() const override { return FedInputs(m_record, m_plan); }
    bool GrabsItself() const override { return !m_plan.screenPipe; }
    std::vector<std::thread> Feed() override;
    void End() override { m_ownTime.Finish(std::chrono::steady_clock::now()); }

private:
    const Record& m_record;
    FeedPlan m_plan;
    RecordingTime& m_time;
    RecordingTime m_ownTime; // of an ffmpeg that grabs the screen itself: until it ends
    std::unique_ptr<ScreenFeeder> m_pPictures; // null: ffmpeg grabs the screen itself
    std::optional<Pipe> m_picturePipe;
    SoundPlan m_sound;
    std::optional<Pipe> m_soundPipe;
};

// Leaves the grabbing to ffmpeg if that does not work. Returns false, after a message, if ffmpeg
// could not either.
bool FedCapture::PreparePictures(const Rectangle& area)
{
    const auto rate = ParseRate(m_record.rate);
    if (!rate || !m_record.isYuv420) {
        return FfmpegCanGrab() ||
               Tell("In a Wayland session a recording is yuv420p and has a plain frame rate");
    }
    OpeningWatch watch(STDIN_FILENO);
    OpenedScreen opened = OpenScreen(
        area, [&](pollfd& descriptor, SteadyTime until) { return watch.Wait(descriptor, until); });
    if (!opened.screen) {
        return Tell(opened.reason);
    }
    auto pipe = MakePipe();
    if (!pipe) {
        return Tell(std::string("no pictures can be passed on: ") + std::strerror(errno));
    }
    m_plan.area = opened.area;
    auto feeder = std::make_unique<ScreenFeeder>(std::move(opened.screen), m_plan.area, *rate,
                                                 std::move(pipe->write), m_time);
    if (!feeder->Prepare()) {
        return Tell(feeder->LostReason());
    }
    m_plan.screenPipe = pipe->read.Number();
    m_picturePipe = std::move(pipe);
    m_pPictures = std::move(feeder);
    return true;
}

// Returns false, after a message, on failure.
bool FedCapture::PrepareSound(const std::vector<std::string>& sources)
{
    if (sources.empty()) {
        return true;
    }
    m_sound = {sources, m_record.sampleRate};
    m_soundPipe = MakePipe();
    if (!m_soundPipe) {
        Complain(std::string("no sound can be read: ") + std::strerror(errno));
        return false;
    }
    m_plan.soundPipe = m_soundPipe->read.Number();
    return true;
}

// The read ends are ffmpeg's alone now, so that it is noticed when it closes them.
std::vector<std::thread> FedCapture::Feed()
{
    std::vector<std::thread> threads;
    m_picturePipe.reset();
    if (m_pPictures) {
        threads.emplace_back([feeder = std::move(m_pPictures)]() mutable {
            feeder->Run();
            Tell(feeder->LostReason());
            feeder.reset(); // closes the pipe
        });
    }
    if (m_soundPipe) {
        m_soundPipe->read.Close();
        // An ffmpeg that grabs the screen itself takes some pictures more before it reads the key.
        const RecordingTime& time = GrabsItself() ? m_ownTime : m_time;
        threads.emplace_back([this, &time, pipe = std::move(m_soundPipe->write)]() mutable {
            SoundFeeder(m_sound, std::move(pipe), time).Run();
        });
    }
    return threads;
}

} // namespace

std::unique_ptr<Capture> OpenCapture(const std::string& /*ffmpeg*/, const Record& record,
                                     RecordingTime& time)
{
    const auto area = ScreenArea(record.screen);
    const auto sources = area ? SourcesFor(record.sounds) : std::nullopt;
    if (!area || !sources) {
        return nullptr;
    }
    auto capture = std::make_unique<FedCapture>(record, *area, time);
    const bool ready = capture->PreparePictures(*area) && capture->PrepareSound(*sources);
    return ready ? std::move(capture) : nullptr;
}

} // namespace tool
