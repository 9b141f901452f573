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

void HoldKeys(int input, std::chrono::milliseconds time)
{
    // The other end of the same pipe: opened first, for what cannot be given back is not taken.
    const std::string name = "/proc/self/fd/" + std::to_string(input);
    const int output = open(name.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (output < 0) {
        return;
    }
    const auto end = Clock::now() + time;
    std::string held;
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
        pollfd keys{input, POLLIN, 0};
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
        if (poll(&keys, 1, static_cast<int>(left.count())) <= 0) {
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

void HoldEarlyKeys(int input, std::chrono::milliseconds time)
{
    struct stat status = {};
    if (fstat(input, &status) == 0 && S_ISFIFO(status.st_mode)) {
        StartCompanion(input, [time](int kept) { HoldKeys(kept, time); });
    }
}

} // namespace tool
