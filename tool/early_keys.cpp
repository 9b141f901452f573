#include "tool/early_keys.h"

#include "tool/companion.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int lookMs = 20; // how often the file is looked at

// The file that ffmpeg writes. It is opened as soon as it is there, for it or its folder may be
// moved meanwhile.
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

// What is typed next; nothing at the end of the keyboard.
std::string ReadKeys(int input)
{
    pollfd keyboard{input, POLLIN, 0};
    poll(&keyboard, 1, -1); // read() does not wait everywhere
    std::array<char, 256> keys{};
    const ssize_t count = read(input, keys.data(), keys.size());
    return {keys.data(), static_cast<size_t>(std::max<ssize_t>(count, 0))};
}

std::string TakeEarlyKeys(int input, Recording recording, std::chrono::milliseconds patience)
{
    const auto end = Clock::now() + patience;
    std::string keys;
    pollfd keyboard{input, POLLIN, 0};
    while (!recording.HasContent() && Clock::now() < end) {
        if (poll(&keyboard, 1, lookMs) > 0) {
            const std::string typed = ReadKeys(input);
            keys += typed;
            if (typed.empty()) {
                keyboard.fd = -1; // nothing more will come: poll() only waits
            }
        }
    }
    return keys;
}

void PassKeysOn(int input, int output, std::string keys)
{
    while (write(output, keys.data(), keys.size()) >= 0) {
        keys = ReadKeys(input);
        if (keys.empty()) {
            return;
        }
    }
}

} // namespace

void HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience)
{
    struct stat status = {};
    std::array<int, 2> ends{};
    if (Recording(file).HasContent() || fstat(input, &status) != 0 || !S_ISFIFO(status.st_mode) ||
        pipe2(ends.data(), O_CLOEXEC) != 0) {
        return;
    }
    const bool started = StartCompanion({input, ends[1]}, [&](const auto& kept) {
        // Whoever ends all processes of a session wants a recording that can be stopped until then.
        std::signal(SIGTERM, SIG_IGN);
        PassKeysOn(kept[0], kept[1], TakeEarlyKeys(kept[0], Recording(file), patience));
    });
    if (started) {
        dup2(ends[0], input);
    }
    close(ends[0]);
    close(ends[1]);
}

} // namespace tool
