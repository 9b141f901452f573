#include "tool/record/recording.h"

#include "tool/awake/awake.h"
#include "tool/capture/capture.h"
#include "tool/ffmpeg/features.h"
#include "tool/record/capture_command.h"
#include "tool/record/recording_file.h"
#include "tool/record/supervisor.h"
#include "tool/system/complaint.h"
#include "tool/system/environment.h"
#include "tool/system/pipe.h"
#include "tool/system/process.h"
#include "tool/system/signals.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds syncInterval{250}; // half the length of a fragment

// How long a file that somebody may still write to has not to grow until it counts as complete.
constexpr std::chrono::seconds writersPatience{5};

// ffmpeg allocates the memory of each frame at an aligned address. glibc frees the few bytes before
// and after it into a cache of the thread, where seven of each size stay and keep the frames beside
// them from becoming one free block again: ten frames of memory were used in turn for three.
// Without that cache ffmpeg needs 8 MiB less for 1280x800 pixels. A user's own settings stay.
std::vector<std::string> MemorySettings()
{
    constexpr const char* name = "GLIBC_TUNABLES";
    if (!Variable(name).empty()) {
        return {};
    }
    return {name + std::string("=glibc.malloc.tcache_count=0")};
}

// One recording: its file, its ffmpeg, and the threads beside it.
class Recording
{
public:
    Recording(const Record& record, Capture& capture, RecordingTime& time)
        : m_record(record),
          m_capture(capture),
          m_time(time)
    {
    }

    int Run(const std::string& ffmpeg);

private:
    bool CreateFile();
    std::optional<Process> Start(const std::string& ffmpeg, const Descriptor& keys,
                                 const Descriptor& held) const;
    std::thread Sync(std::future<void> ended);
    void WaitForWriters(const Descriptor& held) const;
    int CodeOf(int ffmpegCode, Ending ending) const;

    const Record& m_record;
    Capture& m_capture;
    RecordingTime& m_time;
    std::optional<RecordingFile> m_file; // none: ffmpeg makes the output
};

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
    return true;
}

// `held`: stays open in all processes that may write to the file.
std::optional<Process> Recording::Start(const std::string& ffmpeg, const Descriptor& keys,
                                        const Descriptor& held) const
{
    CapturePlan plan{m_capture.Inputs(), FeaturesOf(ffmpeg)};
    if (m_file) {
        plan.file = m_file->Name();
    }
    Program program{ffmpeg, CaptureCommand(m_record, plan)};
    program.variables = MemorySettings();
    program.input = keys.Number();
    program.inherited = plan.capture.descriptors;
    program.inherited.push_back(held.Number());
    if (m_file) {
        program.inherited.push_back(m_file->Number());
    }
    if (!IsIgnored(SIGHUP)) {
        program.blockedSignals = {SIGHUP}; // it would end ffmpeg at once; we look for it instead
    }
    if (m_capture.GrabsItself()) {
        program.parentEndSignal = SIGTERM; // no pipe of ours ends with us
    }
    return Process::Start(program);
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

// ffmpeg may be a script that was killed. The program that it has started goes on, until it meets
// the end of its inputs, and would write over the index. `held`: the other end of the pipe.
void Recording::WaitForWriters(const Descriptor& held) const
{
    constexpr std::chrono::milliseconds look{100};
    std::string nothing;
    off_t size = m_file->Size();
    SteadyTime end = Clock::now() + writersPatience;
    while (!ReadAll(held, nothing, Clock::now() + look) && Clock::now() < end) {
        if (m_file->Size() != size) {
            size = m_file->Size();
            end = Clock::now() + writersPatience;
        }
    }
}

// Returns the exit code of `tool`, after a message if there is no picture and it is known why.
int Recording::CodeOf(int ffmpegCode, Ending ending) const
{
    const bool late = ending == Ending::NoPicture;
    if (m_file->HasContent() || ending == Ending::Asked || (!late && ffmpegCode == 0)) {
        return ffmpegCode;
    }
    const std::string reason = m_capture.NoPictureReason(late);
    if (!reason.empty()) {
        Complain(reason);
    }
    return late ? failed : ffmpegCode;
}

int Recording::Run(const std::string& ffmpeg)
{
    Signals caught({SIGINT, SIGTERM, SIGHUP, SIGCHLD});
    if (!CreateFile()) {
        return failed;
    }
    auto keys = MakePipe();
    auto held = MakePipe();
    auto process = keys && held ? Start(ffmpeg, keys->read, held->write) : std::nullopt;
    if (!process) {
        const int code = Complain(ffmpeg + " cannot be run: " + std::strerror(errno), noProgram);
        if (m_file) {
            m_file->Finish();
        }
        return code;
    }
    keys->read.Close(); // ffmpeg's alone now
    held->write.Close();
    std::promise<void> ended;
    std::vector<std::thread> threads;
    {
        const SignalBlock block; // they are for this thread
        threads = m_capture.Feed();
        if (m_file) {
            threads.push_back(Sync(ended.get_future()));
        }
    }
    KeepAwake();
    Supervisor supervisor({.ffmpeg = *process,
                           .keys = std::move(keys->write),
                           .file = m_file ? &*m_file : nullptr,
                           .grabsItself = m_capture.GrabsItself(),
                           .firstPicture = m_capture.FirstPicturePatience()},
                          STDIN_FILENO, caught, m_time);
    int code = supervisor.Run();
    m_capture.End();
    ended.set_value();
    if (m_file) {
        WaitForWriters(held->read);
        code = CodeOf(code, supervisor.Reason());
        m_file->Finish();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return code;
}

} // namespace

int RunRecording(const std::string& ffmpeg, const Record& record, pid_t recorder,
                 decltype(OpenCapture) open)
{
    // In ffmpeg too. The first: it records on when nobody reads its messages any more.
    IgnoreSignals({SIGPIPE, SIGUSR1, SIGUSR2, SIGQUIT, SIGTTIN, SIGXFSZ});
    RecordingTime time;
    const auto capture = open(ffmpeg, record, time);
    if (!capture || getppid() != recorder) {
        return failed;
    }
    return Recording(record, *capture, time).Run(ffmpeg);
}

} // namespace tool
