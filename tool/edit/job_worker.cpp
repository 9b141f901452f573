#include "tool/edit/job_worker.h"

#include "tool/desktop/notification.h"
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
    const auto file = Make();
    if (!file) {
        m_part.Remove();
        m_console.Say(m_filter.TakeRest() + "tool: " + m_problem + ".\n" +
                          FailureLine(m_job.destination),
                      lastPatience);
    }
    TellEnd(file);
    const int code = m_ffmpeg ? m_ffmpeg->Wait() : failed;
    return file || code != 0 ? code : failed;
}

std::optional<std::string> JobWorker::Make()
{
    if (!Start()) {
        m_problem = m_job.ffmpeg + " cannot be run: " + std::strerror(errno);
        return std::nullopt;
    }
    while (!m_ffmpeg->ExitCode()) {
        Look(static_cast<int>(tickDistance.count()));
        TellProgress();
    }
    ReadOutput();
    const int code = m_ffmpeg->Wait();
    if (code != 0) {
        EndGroup();
    }
    std::string file;
    if (m_cancelled) {
        m_problem = "cancelled";
    } else if (code != 0) {
        m_problem = "ffmpeg has failed with code " + std::to_string(code);
    } else if (!m_part.IsMovie()) {
        m_problem = "the result is empty or incomplete";
    } else if (!SyncFile()) {
        m_problem =
            m_cancelled ? "cancelled" : std::string("the disk has failed: ") + std::strerror(errno);
    } else if (file = m_part.Publish(); file.empty()) {
        m_problem = std::string("the file cannot get its name: ") + std::strerror(errno);
    }
    return file.empty() ? std::nullopt : std::optional(file);
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
    if (m_cancelled && m_ffmpeg && !m_ffmpeg->ExitCode()) {
        EndGroup();
    }
}

// ffmpeg may be a script that has started others.
void JobWorker::EndGroup() const
{
    kill(-m_ffmpeg->Id(), SIGKILL);
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
    if (m_ticks.IsDue(1, std::chrono::steady_clock::now())) {
        m_console.Say("frame= 100 %\n");
    }
    constexpr std::chrono::milliseconds interval{100};
    auto sync = std::async(std::launch::async, [this] { return m_part.Sync() ? 0 : errno; });
    while (!m_cancelled && sync.wait_for(interval) != std::future_status::ready) {
        Look(0);
        TellProgress();
    }
    errno = sync.get();
    return errno == 0 && !m_cancelled;
}

void JobWorker::TellEnd(const std::optional<std::string>& file)
{
    Look(0); // the recorder may have gone since
    if (m_leash.IsOpen()) {
        return;
    }
    const auto name = [](const std::string& path) { return path.substr(path.rfind('/') + 1); };
    if (file) {
        Notify("The video is ready: " + name(*file), "");
    } else if (!m_cancelled) {
        Notify("The video could not be made: " + name(m_job.destination), m_problem + ".");
    }
}

std::string FailureLine(const std::string& destination)
{
    return "tool: No such file was made: " + destination + "\n";
}

} // namespace tool
