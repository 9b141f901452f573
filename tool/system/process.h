// Starts programs as child processes.
#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <unistd.h>
#include <vector>

namespace tool {

// A program to start, and what it gets: the descriptors named here and no others. Signals that this
// process ignores are ignored by it too.
struct Program
{
    std::string path; // absolute
    std::vector<std::string> arguments = {};
    std::vector<std::string> variables = {}; // "NAME=value", beside those of this process
    // Descriptors of this process that become its standard streams; nowhere: /dev/null.
    int input = STDIN_FILENO;
    int output = STDOUT_FILENO;
    int error = STDERR_FILENO;
    std::vector<int> inherited = {};      // further descriptors, which keep their numbers
    std::vector<int> blockedSignals = {}; // all others are not blocked
    bool ownGroup = false;                // a process group of its own, named like the process
    // The signal it gets when this process ends.
    std::optional<int> parentEndSignal = std::nullopt;

    static constexpr int nowhere = -1;
};

// A child process. It may outlive this object.
class Process
{
public:
    // Returns nothing, with errno, if there can be no process or the program cannot be run.
    static std::optional<Process> Start(const Program& program);

    pid_t Id() const { return m_nId; }
    // Sends a signal. Does nothing once ExitCode() or Wait() has seen the end.
    void Signal(int number) const;
    // Returns nothing while it runs, then its exit code, or 128 + N if signal N has ended it.
    std::optional<int> ExitCode();
    // Waits for the end and returns the same code.
    int Wait();

private:
    explicit Process(pid_t id) : m_nId(id) {}
    std::optional<int> Look(int options);

    pid_t m_nId;
    std::optional<int> m_nExitCode;
};

// Replaces this process with the program, of which only path and arguments count. Returns only on
// failure, with errno.
void Become(const Program& program);

// Opens /dev/null for each standard stream that is closed, so that no other file gets its number.
void OpenStandardStreams();

} // namespace tool
