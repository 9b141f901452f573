#include "tool/early_keys.h"

#include "tool/companion.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int lookMs = 20; // how often the file is looked at

bool HasContent(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && status.st_size > 0;
}

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
    while (!HasContent(file) && Clock::now() < end) {
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
    if (!HasContent(file) && fstat(input, &status) == 0 && S_ISFIFO(status.st_mode)) {
        StartCompanion(input, [&](int kept) { HoldKeys(kept, file, patience); });
    }
}

} // namespace tool
