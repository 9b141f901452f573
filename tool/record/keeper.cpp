#include "tool/record/keeper.h"

#include "tool/mp4/settle.h"
#include "tool/record/companion.h"
#include "tool/record/end_signal.h"

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tool {
namespace {

constexpr int parentEnded = SIGUSR1;
constexpr timespec untilOpened{0, 20000000};
constexpr timespec interval{0, 250000000}; // half the length of a fragment

// The recording, held open from the moment ffmpeg has it open: it may be moved, and a file of that
// name which ffmpeg does not write belongs to somebody else.
class Recording
{
public:
    Recording(std::string path, pid_t writer) : m_path(std::move(path)), m_writer(writer) {}

    bool IsOpen() const { return m_file >= 0; }

    // Flushes what was written since the last call to disk, including the name of a new file.
    void Sync()
    {
        if (!IsOpen() && !Open()) {
            return;
        }
        struct stat status = {};
        if (fstat(m_file, &status) == 0 && status.st_size != m_synced) {
            fdatasync(m_file);
            m_synced = status.st_size;
        }
    }

    void Settle() const
    {
        if (IsOpen()) {
            SettleMovie("/proc/self/fd/" + std::to_string(m_file));
        }
    }

private:
    bool Open();

    std::string m_path;
    pid_t m_writer;
    int m_file = -1; // open until this process exits
    off_t m_synced = 0;
};

bool Recording::Open()
{
    struct stat named = {};
    if (stat(m_path.c_str(), &named) != 0 || !S_ISREG(named.st_mode)) {
        return false;
    }
    std::error_code error;
    const std::string open = "/proc/" + std::to_string(m_writer) + "/fd";
    const std::filesystem::directory_iterator end;
    for (std::filesystem::directory_iterator one(open, error); !error && one != end;
         one.increment(error)) {
        struct stat status = {};
        if (stat(one->path().c_str(), &status) == 0 && status.st_dev == named.st_dev &&
            status.st_ino == named.st_ino) {
            m_file = ::open(one->path().c_str(), O_RDONLY | O_CLOEXEC);
            break;
        }
    }
    if (IsOpen()) {
        const int folder = ::open(std::filesystem::path(m_path).parent_path().c_str(),
                                  O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        fsync(folder);
        close(folder);
    }
    return IsOpen();
}

// The loop ends only with ffmpeg, because anybody can send the signal that announces its end.
void Keep(Recording recording, pid_t ffmpeg, bool watchesSignals)
{
    std::signal(SIGXFSZ, SIG_IGN);
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, parentEnded);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    prctl(PR_SET_PDEATHSIG, parentEnded);
    while (getppid() == ffmpeg) {
        recording.Sync();
        if (watchesSignals && IsEndAsked(ffmpeg)) {
            watchesSignals = false; // a second SIGTERM makes ffmpeg drop unwritten data
            kill(ffmpeg, SIGTERM);
        }
        sigtimedwait(&signals, nullptr, recording.IsOpen() ? &interval : &untilOpened);
    }
    recording.Settle();
}

} // namespace

bool StartKeeper(const std::string& path, bool watchesSignals)
{
    const pid_t ffmpeg = getpid();
    return StartCompanion(
        {}, [&](const auto&) { Keep(Recording(path, ffmpeg), ffmpeg, watchesSignals); });
}

} // namespace tool
