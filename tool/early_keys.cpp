#include "tool/early_keys.h"

#include "tool/companion.h"

#include <algorithm>
#include <array>
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

void HoldKeys(int input, const std::string& file, std::chrono::milliseconds patience)
{
    // The other end of the same pipe: opened first, for what cannot be given back is not taken.
    const std::string name = "/proc/self/fd/" + std::to_string(input);
    const int output = open(name.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (output < 0) {
        return;
    }
    const auto end = Clock::now() + patience;
    std::string held;
    Recording recording(file);
    while (!recording.HasContent() && Clock::now() < end) {
        pollfd keys{input, POLLIN, 0};
        if (poll(&keys, 1, lookMs) <= 0) {
            continue;
        }
        std::array<char, 256> piece{};
        const ssize_t count = read(input, piece.data(), piece.size());
        held.append(piece.data(), static_cast<size_t>(std::max<ssize_t>(count, 0)));
    }
    // A pipe holds far more than can be typed in this time.
    [[maybe_unused]] const ssize_t written = write(output, held.data(), held.size());
}

} // namespace

void HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience)
{
    struct stat status = {};
    if (!Recording(file).HasContent() && fstat(input, &status) == 0 && S_ISFIFO(status.st_mode)) {
        StartCompanion(input, [&](int kept) { HoldKeys(kept, file, patience); });
    }
}

} // namespace tool
