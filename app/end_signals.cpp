#include "app/end_signals.h"

#include <QWidget>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

std::array<int, 2> g_pipe{-1, -1}; // for the life of the process: the handler writes to it

// A handler may not do more than this.
void TellPipe(int /*signal*/)
{
    const int error = errno;
    [[maybe_unused]] const ssize_t written = write(g_pipe[1], "x", 1); // one waiting is enough
    errno = error;
}

bool OpenPipe()
{
    if (g_pipe[0] < 0 && pipe(g_pipe.data()) != 0) {
        return false;
    }
    for (const int end : g_pipe) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
    return true;
}

} // namespace

EndSignals::EndSignals(QWidget& window) : m_window(window)
{
    if (!OpenPipe()) {
        return;
    }
    connect(&m_notifier, SIGNAL(activated(QSocketDescriptor, QSocketNotifier::Type)), this,
            SLOT(Close()));
    m_notifier.setSocket(g_pipe[0]);
    m_notifier.setEnabled(true);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        struct sigaction action = {};
        sigaction(number, nullptr, &action);
        if (action.sa_handler == SIG_DFL) {
            action.sa_handler = TellPipe;
            action.sa_flags = SA_RESTART;
            sigaction(number, &action, nullptr);
        }
    }
}

void EndSignals::Close()
{
    char byte = 0;
    if (read(g_pipe[0], &byte, 1) == 1) {
        m_window.close();
    }
}
