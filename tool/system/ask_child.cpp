#include "tool/system/ask_child.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

// Reads until the end of the pipe. Returns false if there is too much, or it takes too long.
bool ReadAll(int pipe, std::string& text, Clock::time_point end)
{
    constexpr size_t most = 1U << 20U;
    std::array<char, 4096> bytes{};
    while (text.size() < most) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd ready{pipe, POLLIN, 0};
        if (left <= 0 || poll(&ready, 1, static_cast<int>(left)) == 0) {
            return false;
        }
        const ssize_t got = read(pipe, bytes.data(), bytes.size());
        if (got == 0 || (got < 0 && errno != EINTR)) {
            return got == 0;
        }
        text.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    return false;
}

} // namespace

std::string AskChild(const std::function<void(int)>& run, std::chrono::milliseconds patience)
{
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        run(pipe[1]);
        _exit(0);
    }
    close(pipe[1]);
    std::string text;
    if (child > 0 && !ReadAll(pipe[0], text, Clock::now() + patience)) {
        kill(child, SIGKILL);
    }
    close(pipe[0]);
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return text;
}

} // namespace tool
