#include "tool/edit/job.h"

#include "tool/edit/job_worker.h"
#include "tool/edit/room.h"
#include "tool/system/complaint.h"
#include "tool/system/keyboard.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

// The recorder's wait has begun then.
const SteadyTime programStart = std::chrono::steady_clock::now();

int Refuse(const std::string& reason, const std::string& destination)
{
    Console().Say("tool: " + reason + ".\n" + FailureLine(destination), std::chrono::seconds(1));
    return failed;
}

// What the recorder started: passes cancels on and waits for the worker's end.
class Front
{
public:
    Front(pid_t worker, Descriptor leash) : m_worker(worker), m_leash(std::move(leash)) {}

    // Returns the worker's exit status as of waitpid(), or nothing if it takes too long.
    std::optional<int> Wait()
    {
        int status = 0;
        while (waitpid(m_worker, &status, WNOHANG) == 0) {
            const auto left = TimeLeft();
            if (left.count() <= 0) {
                return std::nullopt;
            }
            Look(static_cast<int>(left.count()));
        }
        return status;
    }

private:
    void Look(int milliseconds);
    pid_t m_worker;
    Descriptor m_leash;
    Signals m_signals{SIGTERM, SIGINT, SIGHUP, SIGCHLD};
    Keyboard m_keyboard{STDIN_FILENO};
};

void Front::Look(int milliseconds)
{
    std::array<pollfd, 2> events{
        {{m_signals.Number(), POLLIN, 0}, {m_keyboard.Number(), POLLIN, 0}}};
    if (poll(events.data(), events.size(), milliseconds) <= 0) {
        return;
    }
    if (events[1].revents != 0) {
        m_keyboard.Read();
    }
    bool cancels = m_keyboard.IsQuitTyped();
    while (const auto number = m_signals.Next()) {
        cancels = cancels || *number != SIGCHLD;
    }
    if (cancels) {
        [[maybe_unused]] const ssize_t written = write(m_leash.Number(), "q", 1);
    }
}

} // namespace

std::chrono::milliseconds TimeLeft()
{
    return std::chrono::ceil<std::chrono::milliseconds>(programStart + longestRun -
                                                        std::chrono::steady_clock::now());
}

int RunJob(const Job& job)
{
    IgnoreSignals({SIGPIPE});
    std::optional<SignalBlock> block(std::in_place); // until somebody is there to remove the file
    PartFile part(job.destination);
    if (!part.IsOpen()) {
        return Refuse(part.Problem(), job.destination);
    }
    if (const std::string lack = LackOfRoom(part.Folder(), job.bytes); !lack.empty()) {
        part.Remove();
        return Refuse(lack, job.destination);
    }
    auto leash = MakePipe();
    const pid_t child = leash ? fork() : -1;
    if (child < 0) {
        part.Remove();
        return Refuse(std::string("no process can be started: ") + std::strerror(errno),
                      job.destination);
    }
    if (child == 0) {
        setsid();
        leash->write.Close();
        JobWorker worker(job, part, std::move(leash->read));
        block.reset();
        _exit(worker.Run());
    }
    leash->read.Close();
    Front front(child, std::move(leash->write));
    block.reset();
    const auto status = front.Wait();
    if (!status) {
        return 0; // the recorder tells success now, and the worker goes on
    }
    if (WIFEXITED(*status)) {
        return WEXITSTATUS(*status);
    }
    part.Remove();
    return Refuse("the job was killed", job.destination);
}

} // namespace tool
