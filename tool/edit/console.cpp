#include "tool/edit/console.h"

#include <algorithm>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tool {

void Console::Say(std::string_view text, std::chrono::milliseconds patience)
{
    constexpr size_t chunk = 512; // POSIX: a pipe that can be written to has room for so much
    while (!text.empty()) {
        pollfd target{STDERR_FILENO, POLLOUT, 0};
        const int ready = poll(&target, 1, m_isStuck ? 0 : static_cast<int>(patience.count()));
        m_isStuck = ready == 0;
        const ssize_t written =
            ready > 0 ? write(STDERR_FILENO, text.data(), std::min(text.size(), chunk)) : -1;
        if (written <= 0) {
            return;
        }
        text.remove_prefix(static_cast<size_t>(written));
        m_last = std::chrono::steady_clock::now();
    }
}

bool Console::IsTooQuiet(SteadyTime now) const
{
    constexpr std::chrono::milliseconds longestSilence{200};
    return now - m_last > longestSilence;
}

void Console::Close()
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing, stream);
    }
    close(nothing);
}

} // namespace tool
