#include "tool/record/early_keys.h"

#include "tool/record/companion.h"
#include "tool/record/end_signal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int lookMs = 20;    // interval for checking the file
constexpr int signalMs = 100; // interval for checking ffmpeg's signals
constexpr const char* quit = "q";
constexpr int mostAttempts = 100; // child processes started in turn

// The file that ffmpeg writes. Opened as soon as it exists, because it or its folder may be moved.
class Recording
{
public:
    explicit Recording(std::string path) : m_path(std::move(path)) {}
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;
    ~Recording()
    {
        if (m_file >= 0) {
            close(m_file);
        }
    }

    bool HasContent()
    {
        if (m_file < 0) {
            m_file = open(m_path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        }
        struct stat status = {};
        return m_file >= 0 && fstat(m_file, &status) == 0 && status.st_size > 0;
    }

private:
    std::string m_path;
    int m_file = -1;
};

// Reads the next keys. Returns an empty string at the end of input.
std::string ReadKeys(int input)
{
    std::array<char, 256> keys{};
    const ssize_t count = read(input, keys.data(), keys.size());
    return {keys.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))};
}

struct Keyboard
{
    int input;  // the recorder's keys
    int output; // ffmpeg's standard input
    pid_t ffmpeg;
};

// Returns when ffmpeg is gone, or after the "q" for the end of input.
void PassKeysOn(Keyboard keyboard, Recording recording, std::chrono::milliseconds patience)
{
    const auto end = Clock::now() + patience;
    bool holds = true;
    bool endIsSeen = false;
    std::string keys;
    while (holds || keyboard.input >= 0) {
        std::array<pollfd, 2> ends{{{keyboard.input, POLLIN, 0}, {keyboard.output, 0, 0}}};
        poll(ends.data(), ends.size(), holds ? lookMs : signalMs);
        if ((ends[1].revents & POLLERR) != 0) {
            return;
        }
        if (ends[0].revents != 0) {
            const std::string typed = ReadKeys(keyboard.input);
            keys += typed.empty() ? quit : typed;
            keyboard.input = typed.empty() ? -1 : keyboard.input; // poll() ignores it
        }
        if (!endIsSeen && IsEndAsked(keyboard.ffmpeg)) {
            endIsSeen = true;
            keys += quit;
        }
        holds = holds && !recording.HasContent() && Clock::now() < end;
        if (!holds && !keys.empty()) {
            if (write(keyboard.output, keys.data(), keys.size()) < 0) {
                return;
            }
            keys.clear();
        }
    }
}

// Runs it in a child process, and starts another one if that is killed. The child survives this
// process too, so keys are lost only if both are killed at once.
void RunGuarded(const std::function<void()>& run)
{
    std::signal(SIGCHLD, SIG_DFL); // for waitpid()
    const pid_t guard = getpid();
    int status = 0;
    int attempts = 0;
    do {
        const pid_t child = fork();
        if (child <= 0) {
            if (child == 0) {
                PassEndSignalsTo(guard);
            }
            run();
            return;
        }
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
    } while (WIFSIGNALED(status) && ++attempts < mostAttempts);
}

} // namespace

bool HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience)
{
    struct stat status = {};
    std::array<int, 2> ends{};
    if (Recording(file).HasContent() || fstat(input, &status) != 0 || !S_ISFIFO(status.st_mode) ||
        pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const pid_t ffmpeg = getpid();
    const bool started = StartCompanion({input, ends[1]}, [&](const auto& kept) {
        RunGuarded([&] { PassKeysOn({kept[0], kept[1], ffmpeg}, Recording(file), patience); });
    });
    if (started) {
        dup2(ends[0], input);
    }
    close(ends[0]);
    close(ends[1]);
    return started;
}

} // namespace tool
