#include "tool/edit/job_worker.h"

#include "tool/ffmpeg/features.h"
#include "tool/system/complaint.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <future>
#include <poll.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr std::chrono::seconds lastPatience{1};

} // namespace

JobWorker::JobWorker(const Job& job, PartFile& part, Descriptor leash)
    : m_job(job),
      m_part(part),
      m_leash(std::move(leash)),
      m_signals({SIGTERM, SIGINT, SIGHUP, SIGCHLD}),
      m_ticks(job.ticks)
{
}

int JobWorker::Run()
{
    if (!Start()) {
        return Fail(m_job.ffmpeg + " cannot be run: " + std::strerror(errno));
    }
    while (!m_ffmpeg->ExitCode()) {
        Look(static_cast<int>(tickDistance.count()));
        TellProgress();
    }
    ReadOutput();
    if (m_cancelled) {
        return Fail("cancelled");
    }
    if (const int code = m_ffmpeg->Wait(); code != 0) {
        return Fail("ffmpeg has failed with code " + std::to_string(code));
    }
    if (!m_part.IsMovie()) {
        return Fail("the result is empty or incomplete");
    }
    if (m_ticks.IsDue(1, std::chrono::steady_clock::now())) {
        m_console.Say("frame= 100 %\n");
    }
    if (!SyncFile()) {
        return Fail(m_cancelled ? "cancelled"
                                : std::string("the disk failed: ") + std::strerror(errno));
    }
    if (m_part.Publish().empty()) {
        return Fail(std::string("the file cannot get its name: ") + std::strerror(errno));
    }
    return 0;
}

bool JobWorker::Start()
{
    auto pipe = MakePipe();
    if (!pipe) {
        return false;
    }
    MakeNonBlocking(pipe->read);
    Program program{m_job.ffmpeg, {"-nostdin", "-y"}};
    if (FeaturesOf(m_job.ffmpeg).statsPeriod) {
        program.arguments.insert(program.arguments.end(), {"-stats_period", "0.1"});
    }
    program.arguments.insert(program.arguments.end(), m_job.arguments.begin(),
                             m_job.arguments.end());
    const std::string muxer = MuxerFor(m_job.destination);
    program.arguments.insert(program.arguments.end(), {"-f", muxer, m_part.InheritedPath()});
    program.input = Program::nowhere;
    program.output = pipe->write.Number();
    program.error = pipe->write.Number();
    program.inherited = m_job.inherited;
    program.inherited.push_back(m_part.File());
    program.ownGroup = true;
    program.parentEndSignal = SIGKILL;
    m_ffmpeg = Process::Start(program);
    m_output = std::move(pipe->read);
    return m_ffmpeg.has_value();
}

// Waits for events and handles them.
void JobWorker::Look(int milliseconds)
{
    std::array<pollfd, 3> events{{{m_output.Number(), POLLIN, 0},
                                  {m_leash.Number(), POLLIN, 0},
                                  {m_signals.Number(), POLLIN, 0}}};
    if (poll(events.data(), events.size(), milliseconds) <= 0) {
        return;
    }
    ReadSignals();
    if (events[1].revents != 0) {
        ReadLeash();
    }
    if (events[0].revents != 0) {
        ReadOutput();
    }
    if (m_cancelled && !m_ffmpeg->ExitCode()) {
        kill(-m_ffmpeg->Id(), SIGKILL); // a wrapper has started others
    }
}

void JobWorker::ReadOutput()
{
    std::array<char, 16384> bytes{};
    ssize_t got = 0;
    while (m_output.IsOpen() && (got = read(m_output.Number(), bytes.data(), bytes.size())) > 0) {
        m_console.Say(m_filter.Take({bytes.data(), static_cast<size_t>(got)}));
    }
    if (got == 0) {
        m_output.Close();
    }
}

void JobWorker::ReadLeash()
{
    char byte = 0;
    const ssize_t got = read(m_leash.Number(), &byte, 1);
    if (got > 0) {
        m_cancelled = true;
    } else if (got == 0) {
        m_leash.Close();
        Console::Close();
    }
}

void JobWorker::ReadSignals()
{
    while (const auto number = m_signals.Next()) {
        m_cancelled = m_cancelled || *number != SIGCHLD;
    }
}

// The part of the work that is done, 0 to 1. 0 if nothing is known about the result.
double JobWorker::Share() const
{
    double share = 0;
    if (m_job.seconds > 0) {
        share = m_filter.Seconds() / m_job.seconds;
    } else if (m_job.bytes > 0) {
        share = static_cast<double>(m_part.Size()) / static_cast<double>(m_job.bytes);
    }
    return std::min(share, 1.0);
}

void JobWorker::TellProgress()
{
    const auto now = std::chrono::steady_clock::now();
    const double share = Share();
    if (m_ticks.IsDue(share, now)) {
        m_console.Say("frame= " + std::to_string(static_cast<int>(share * 100)) + " %\n");
    } else if (m_console.IsTooQuiet(now)) {
        m_console.Say("tool: " + std::to_string(m_part.Size()) + " bytes.\n");
    }
}

// A slow disk may take minutes. Sets errno on failure.
bool JobWorker::SyncFile()
{
    constexpr std::chrono::milliseconds interval{100};
    auto sync = std::async(std::launch::async, [this] { return m_part.Sync() ? 0 : errno; });
    while (!m_cancelled && sync.wait_for(interval) != std::future_status::ready) {
        Look(0);
        TellProgress();
    }
    errno = sync.get();
    return errno == 0 && !m_cancelled;
}

int JobWorker::Fail(const std::string& reason)
{
    m_part.Remove();
    m_console.Say(m_filter.TakeRest() + "tool: " + reason + ".\n" + FailureLine(m_job.destination),
                  lastPatience);
    const int code = m_ffmpeg ? m_ffmpeg->Wait() : failed;
    return code == 0 ? failed : code;
}

std::string FailureLine(const std::string& destination)
{
    return "tool: No such file was made: " + destination + "\n";
}

} // namespace tool
