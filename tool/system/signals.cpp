#include "tool/system/signals.h"

#include <atomic>
#include <cerrno>

namespace tool {
namespace {

std::atomic<int> g_pipe = -1; // where the handler writes

static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void PassOn(int number)
{
    const int before = errno;
    const auto byte = static_cast<unsigned char>(number);
    // A full pipe loses the signal, but the reader is awake then.
    [[maybe_unused]] const ssize_t written = write(g_pipe, &byte, 1);
    errno = before;
}

} // namespace

Signals::Signals(std::initializer_list<int> numbers) : m_pipe(MakePipe())
{
    if (!m_pipe) {
        return;
    }
    MakeNonBlocking(m_pipe->read);
    MakeNonBlocking(m_pipe->write);
    g_pipe = m_pipe->write.Number();
    struct sigaction action = {};
    action.sa_handler = PassOn;
    action.sa_flags = SA_RESTART;
    for (const int number : numbers) {
        if (number == SIGCHLD || !IsIgnored(number)) {
            sigaction(number, &action, nullptr);
            m_caught.push_back(number);
        }
    }
}

Signals::~Signals()
{
    for (const int number : m_caught) {
        std::signal(number, SIG_DFL);
    }
    g_pipe = -1;
}

std::optional<int> Signals::Next()
{
    unsigned char number = 0;
    return m_pipe && read(m_pipe->read.Number(), &number, 1) == 1 ? std::optional<int>(number)
                                                                  : std::nullopt;
}

bool IsIgnored(int number)
{
    struct sigaction action = {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void IgnoreSignals(std::initializer_list<int> numbers)
{
    for (const int number : numbers) {
        std::signal(number, SIG_IGN);
    }
}

SignalBlock::SignalBlock()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, &m_before);
}

SignalBlock::~SignalBlock()
{
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
}

} // namespace tool
