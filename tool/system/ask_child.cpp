#include "tool/system/ask_child.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tool {

std::string AskChild(const std::function<void(int)>& run)
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
    std::array<char, 4096> bytes{};
    for (ssize_t got = 1; child > 0 && got != 0;) {
        got = read(pipe[0], bytes.data(), bytes.size());
        if (got < 0 && errno != EINTR) {
            break;
        }
        text.append(bytes.data(), static_cast<size_t>(std::max<ssize_t>(got, 0)));
    }
    close(pipe[0]);
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
    return text;
}

} // namespace tool
