#include "tool/record/recording.h"

#include "tool/devices/capture_devices.h"
#include "tool/ffmpeg/features.h"
#include "tool/record/capture_command.h"
#include "tool/record/recording_file.h"
#include "tool/record/recording_time.h"
#include "tool/record/screen_feeder.h"
#include "tool/record/sound_feeder.h"
#include "tool/record/supervisor.h"
#include "tool/screen/screen.h"
#include "tool/system/complaint.h"
#include "tool/system/environment.h"
#include "tool/system/pipe.h"
#include "tool/system/process.h"
#include "tool/system/signals.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <future>
#include <memory>
#include <optional>
#include <poll.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tool {
namespace {

constexpr std::chrono::milliseconds syncInterval{250}; // half the length of a fragment

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

bool WaitForDescriptor(pollfd& descriptor, SteadyTime until)
{
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
    poll(&descriptor, 1, static_cast<int>(std::clamp<int64_t>(left.count(), 0, 1000)));
    return true;
}

// One recording: everything that is made before ffmpeg is started, and the threads beside it.
class Recording
{
public:
    Recording(const Record& record, CapturePlan plan) : m_record(record), m_plan(std::move(plan)) {}

    bool PreparePictures();
    bool PrepareSound(const std::vector<std::string>& sources);
    int Run(const std::string& ffmpeg);

private:
    bool CreateFile();
    std::optional<Process> Start(const std::string& ffmpeg, const Descriptor& keys) const;
    std::vector<std::thread> Feed();
    std::thread Sync(std::future<void> ended);

    const Record& m_record;
    CapturePlan m_plan;
    RecordingTime m_time;
    RecordingTime m_ownTime; // of an ffmpeg that grabs the screen itself: until it ends
    std::unique_ptr<ScreenFeeder> m_pPictures; // null: ffmpeg grabs the screen itself
    std::optional<Pipe> m_picturePipe;
    SoundPlan m_sound;
    std::optional<Pipe> m_soundPipe;
    std::optional<RecordingFile> m_file; // none: ffmpeg makes the output
};

// Leaves the grabbing to ffmpeg if that does not work. Returns false, after a message, if ffmpeg
// could not either.
bool Recording::PreparePictures()
{
    const auto rate = ParseRate(m_record.rate);
    if (!rate || !m_record.isYuv420) {
        return true;
    }
    OpenedScreen opened = OpenScreen(m_plan.area, WaitForDescriptor);
    auto pipe = MakePipe();
    if (!opened.screen || !pipe) {
        return Tell(opened.reason);
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
bool Recording::PrepareSound(const std::vector<std::string>& sources)
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

// Returns false, after a message, on failure.
bool Recording::CreateFile()
{
    if (!m_record.fragmented) {
        return true;
    }
    m_file = RecordingFile::Create(m_record.file);
    if (!m_file) {
        std::fprintf(stderr, "%s: %s\n", m_record.file.c_str(), std::strerror(errno));
        return false;
    }
    m_plan.file = m_file->Name();
    return true;
}

std::optional<Process> Recording::Start(const std::string& ffmpeg, const Descriptor& keys) const
{
    Program program{ffmpeg, CaptureCommand(m_record, m_plan)};
    program.input = keys.Number();
    for (const auto& pipe : {m_plan.screenPipe, m_plan.soundPipe}) {
        if (pipe) {
            program.inherited.push_back(*pipe);
        }
    }
    if (m_file) {
        program.inherited.push_back(m_file->Number());
    }
    if (!IsIgnored(SIGHUP)) {
        program.blockedSignals = {SIGHUP}; // it would end ffmpeg at once; we look for it instead
    }
    if (!m_pPictures) {
        program.parentEndSignal = SIGTERM; // no pipe of ours ends with us
    }
    return Process::Start(program);
}

std::vector<std::thread> Recording::Feed()
{
    std::vector<std::thread> threads;
    // An ffmpeg that grabs the screen itself takes some pictures more before it reads the key.
    const RecordingTime& soundTime = m_pPictures ? m_time : m_ownTime;
    if (m_pPictures) {
        threads.emplace_back([feeder = std::move(m_pPictures)]() mutable {
            feeder->Run();
            feeder.reset(); // closes the pipe
        });
    }
    if (m_soundPipe) {
        threads.emplace_back([this, &soundTime, pipe = std::move(m_soundPipe->write)]() mutable {
            SoundFeeder(m_sound, std::move(pipe), soundTime).Run();
        });
    }
    return threads;
}

// A slow disk holds up this thread only.
std::thread Recording::Sync(std::future<void> ended)
{
    return std::thread([this, ended = std::move(ended)] {
        m_file->SyncName();
        while (ended.wait_for(syncInterval) == std::future_status::timeout) {
            m_file->Sync();
        }
    });
}

int Recording::Run(const std::string& ffmpeg)
{
    // In ffmpeg too. The first: it records on when nobody reads its messages any more.
    IgnoreSignals({SIGPIPE, SIGUSR1, SIGUSR2, SIGQUIT, SIGTTIN, SIGXFSZ});
    Signals caught({SIGINT, SIGTERM, SIGHUP, SIGCHLD});
    if (!CreateFile()) {
        return failed;
    }
    auto keys = MakePipe();
    auto process = keys ? Start(ffmpeg, keys->read) : std::nullopt;
    if (!process) {
        const int code = Complain(ffmpeg + " cannot be run: " + std::strerror(errno), noProgram);
        if (m_file) {
            m_file->Finish();
        }
        return code;
    }
    // These ends are ffmpeg's alone now, so that it is noticed when it closes them.
    keys->read.Close();
    m_picturePipe.reset();
    if (m_soundPipe) {
        m_soundPipe->read.Close();
    }
    const bool grabsItself = m_pPictures == nullptr;
    std::promise<void> ended;
    std::vector<std::thread> threads;
    {
        const SignalBlock block; // they are for this thread
        threads = Feed();
        if (m_file) {
            threads.push_back(Sync(ended.get_future()));
        }
    }
    Supervisor supervisor(
        {*process, std::move(keys->write), m_file ? &*m_file : nullptr, grabsItself}, STDIN_FILENO,
        caught, m_time);
    const int code = supervisor.Run();
    m_ownTime.Finish(std::chrono::steady_clock::now());
    ended.set_value();
    if (m_file) {
        m_file->Finish();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return code;
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
    plan.area = EvenSized(*area);
    plan.knowsStatsPeriod = FeaturesOf(ffmpeg).statsPeriod;
    Recording recording(record, plan);
    if (!recording.PreparePictures() || !recording.PrepareSound(*sources) ||
        getppid() != recorder) {
        return failed;
    }
    return recording.Run(ffmpeg);
}

} // namespace tool
