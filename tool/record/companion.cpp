#include "tool/record/companion.h"

#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tool {
namespace {

pid_t g_endAsked = 0; // the process that signals are forwarded to

extern "C" void PassEndOn(int)
{
    if (getppid() == g_endAsked) {
        kill(g_endAsked, SIGHUP);
    }
}

// Closes everything else, because readers of ffmpeg's output must not wait for a companion. Moves
// the kept descriptors to the first numbers after the standard ones.
std::vector<int> CloseAllBut(const std::vector<int>& kept)
{
    constexpr int first = STDERR_FILENO + 1;
    const int end = first + static_cast<int>(kept.size());
    std::vector<int> moved;
    moved.reserve(kept.size());
    for (const int one : kept) {
        moved.push_back(fcntl(one, F_DUPFD, end)); // move it out of the way first
    }
    for (int i = first; i < end; ++i) {
        int& one = moved[static_cast<size_t>(i - first)];
        one = dup2(one, i);
        if (one < 0) {
            close(i);
        }
    }
    close_range(static_cast<unsigned>(end), ~0U, 0);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing, standard);
    }
    close(nothing);
    return moved;
}

} // namespace

bool IsIgnored(int signal)
{
    struct sigaction action = {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void PassEndSignalsTo(pid_t parent)
{
    g_endAsked = parent;
    struct sigaction action = {};
    action.sa_handler = PassEndOn;
    action.sa_flags = SA_RESTART;
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGHUP}) {
        if (!IsIgnored(signal)) {
            sigaction(signal, &action, nullptr);
        }
        sigaddset(&signals, signal);
    }
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

bool StartCompanion(const std::vector<int>& kept,
                    const std::function<void(const std::vector<int>&)>& run)
{
    // ffmpeg does not know its companions and waits for none. This lets the kernel reap those that
    // exit before it, and survives the exec.
    std::signal(SIGCHLD, SIG_IGN);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        // Ctrl-C in a terminal goes to ffmpeg too, which finishes the file and needs its companions
        // until then.
        for (const int signal : {SIGINT, SIGQUIT, SIGPIPE}) {
            std::signal(signal, SIG_IGN);
        }
        PassEndSignalsTo(parent);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent) {
            run(CloseAllBut(kept));
        }
        _exit(0);
    }
    return child > 0;
}

} // namespace tool
