#include "tool/system/parent_end.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <sys/event.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

// Waits for the end of one of them. Returns whether it was the parent's alone.
bool IsLeftAlone(pid_t process, pid_t parent)
{
    const int queue = kqueue();
    for (const pid_t watched : {process, parent}) {
        struct kevent wish = {};
        EV_SET(&wish, watched, EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
        if (kevent(queue, &wish, 1, nullptr, 0, nullptr) != 0) {
            return watched == parent && errno == ESRCH; // it has ended already
        }
    }
    std::array<struct kevent, 2> ended{};
    int count = 0;
    while ((count = kevent(queue, nullptr, 0, ended.data(), ended.size(), nullptr)) < 0 &&
           errno == EINTR) {
    }
    return count == 1 && static_cast<pid_t>(ended[0].ident) == parent;
}

// A process of its own, in a session of its own, that no signal but SIGKILL ends. It closes all
// descriptors: whoever reads from a pipe of the two processes must see the end of it.
[[noreturn]] void Watch(pid_t process, pid_t parent, int number)
{
    const pid_t target = getpgid(process) == process ? -process : process;
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, nullptr);
    setsid();
    const int end = getdtablesize();
    for (int descriptor = 0; descriptor < end; ++descriptor) {
        close(descriptor);
    }
    if (IsLeftAlone(process, parent)) {
        kill(target, number);
    }
    _exit(0);
}

} // namespace

bool PrepareParentEnd()
{
    return true;
}

// There is no call for this, so a third process watches both. It is made through another one that
// ends at once, so that it is nobody's child and nobody has to wait for it.
bool SignalAtParentEnd(int number, pid_t parent)
{
    const pid_t process = getpid();
    const pid_t maker = fork();
    if (maker < 0) {
        return false;
    }
    if (maker == 0) {
        const pid_t watcher = fork();
        if (watcher == 0) {
            Watch(process, parent, number);
        }
        _exit(watcher < 0 ? errno : 0);
    }
    int status = 0;
    while (waitpid(maker, &status, 0) < 0 && errno == EINTR) {
    }
    errno = getppid() == parent ? WEXITSTATUS(status) : ESRCH;
    return errno == 0;
}

} // namespace tool
