#include "tool/companion.h"

#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace tool {
namespace {

// Whoever waits for the end of ffmpeg's output must not wait for us.
int CloseAllBut(int kept)
{
    constexpr int first = STDERR_FILENO + 1;
    if (kept != first && dup2(kept, first) < 0) {
        close(first);
    }
    close_range(first + 1, ~0U, 0);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing, standard);
    }
    close(nothing);
    return first;
}

} // namespace

bool StartCompanion(int kept, const std::function<void(int)>& run)
{
    // ffmpeg knows nothing of its companions and waits for none: the kernel clears away those that
    // end before it. This outlives the exec.
    std::signal(SIGCHLD, SIG_IGN);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        // A Ctrl-C in a terminal goes to ffmpeg as well: it finishes the file, and needs us until
        // it has.
        for (const int signal : {SIGINT, SIGHUP, SIGQUIT, SIGPIPE}) {
            std::signal(signal, SIG_IGN);
        }
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() == parent) {
            run(CloseAllBut(kept));
        }
        _exit(0);
    }
    return child > 0;
}

} // namespace tool
