#include "tool/system/process.h"

#include "tool/system/inheritance.h"
#include "tool/system/parent_end.h"
#include "tool/system/pipe.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <string_view>
#include <sys/wait.h>

// Not every system's headers declare it.
extern "C" char** environ; // NOLINT(readability-redundant-declaration)

namespace tool {
namespace {

// Prepared before the fork.
std::vector<char*> Pointers(const Program& program)
{
    std::vector<char*> pointers{const_cast<char*>(program.path.c_str())};
    for (const std::string& argument : program.arguments) {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

// The program's own variables, then those of this process with other names.
std::vector<char*> Environment(const Program& program)
{
    std::vector<char*> pointers;
    for (const std::string& variable : program.variables) {
        pointers.push_back(const_cast<char*>(variable.c_str()));
    }
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
        const std::string_view inherited = *variable;
        const auto hasItsName = [inherited](const std::string& own) {
            return inherited.starts_with(std::string_view(own).substr(0, own.find('=') + 1));
        };
        if (std::none_of(program.variables.begin(), program.variables.end(), hasItsName)) {
            pointers.push_back(*variable);
        }
    }
    pointers.push_back(nullptr);
    return pointers;
}

// What follows runs between fork and exec, where only system calls are allowed.

// Returns false, with errno, on failure.
bool Redirect(int from, int to)
{
    if (from == Program::nowhere) {
        from = open("/dev/null", O_RDWR | O_CLOEXEC);
    }
    return from == to ? fcntl(to, F_SETFD, 0) == 0 : dup2(from, to) == to;
}

bool Prepare(const Program& program, const sigset_t& blocked, pid_t parent)
{
    if (program.ownGroup && setpgid(0, 0) != 0) {
        return false;
    }
    InheritStandardStreamsOnly();
    if (program.parentEndSignal && !SignalAtParentEnd(*program.parentEndSignal, parent)) {
        return false;
    }
    for (const int kept : program.inherited) {
        if (fcntl(kept, F_SETFD, 0) != 0) {
            return false;
        }
    }
    return Redirect(program.input, STDIN_FILENO) && Redirect(program.output, STDOUT_FILENO) &&
           Redirect(program.error, STDERR_FILENO) &&
           sigprocmask(SIG_SETMASK, &blocked, nullptr) == 0;
}

} // namespace

std::optional<Process> Process::Start(const Program& program)
{
    const std::vector<char*> arguments = Pointers(program);
    const std::vector<char*> environment = Environment(program);
    sigset_t blocked;
    sigemptyset(&blocked);
    for (const int number : program.blockedSignals) {
        sigaddset(&blocked, number);
    }
    auto failure = MakePipe(); // carries errno, or ends without a byte when the program runs
    if (!failure || (program.parentEndSignal && !PrepareParentEnd())) {
        return std::nullopt;
    }
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child < 0) {
        return std::nullopt;
    }
    if (child == 0) {
        if (Prepare(program, blocked, parent)) {
            execve(program.path.c_str(), arguments.data(), environment.data());
        }
        const int reason = errno;
        [[maybe_unused]] const ssize_t sent =
            write(failure->write.Number(), &reason, sizeof reason);
        _exit(127);
    }
    failure->write.Close();
    int reason = 0;
    ssize_t got = 0;
    while ((got = read(failure->read.Number(), &reason, sizeof reason)) < 0 && errno == EINTR) {
    }
    Process process(child);
    if (got > 0) {
        process.Wait();
        errno = reason;
        return std::nullopt;
    }
    return process;
}

void Process::Signal(int number) const
{
    if (!m_nExitCode) {
        kill(m_nId, number);
    }
}

std::optional<int> Process::ExitCode()
{
    return Look(WNOHANG);
}

int Process::Wait()
{
    while (!Look(0)) {
    }
    return *m_nExitCode;
}

std::optional<int> Process::Look(int options)
{
    constexpr int signalled = 128;
    int status = 0;
    const pid_t ended = m_nExitCode ? 0 : waitpid(m_nId, &status, options);
    if (ended == m_nId) {
        m_nExitCode = WIFSIGNALED(status) ? signalled + WTERMSIG(status) : WEXITSTATUS(status);
    } else if (ended < 0 && errno != EINTR) {
        m_nExitCode = signalled; // somebody else has waited for it
    }
    return m_nExitCode;
}

void Become(const Program& program)
{
    execv(program.path.c_str(), Pointers(program).data());
}

void OpenStandardStreams()
{
    int number = open("/dev/null", O_RDWR);
    while (number >= 0 && number <= STDERR_FILENO) {
        number = open("/dev/null", O_RDWR);
    }
    close(number);
}

} // namespace tool
