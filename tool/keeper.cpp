#include "tool/keeper.h"

#include "tool/companion.h"
#include "tool/settle.h"

#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {
namespace {

constexpr int parentEnded = SIGUSR1;
constexpr timespec interval{0, 250000000}; // half as long as a piece

// The recording, held open from when it is first seen: its folder may be moved meanwhile.
class Recording
{
public:
    Recording(int folder, std::string name) : m_folder(folder), m_name(std::move(name)) {}

    // Makes the disk have what was written since the last time; the name of a new file as well.
    void Sync()
    {
        if (m_file < 0) {
            m_file = openat(m_folder, m_name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
            if (m_file < 0) {
                return;
            }
            fsync(m_folder);
        }
        struct stat status = {};
        if (fstat(m_file, &status) == 0 && status.st_size != m_synced) {
            fdatasync(m_file);
            m_synced = status.st_size;
        }
    }

    void Settle()
    {
        Sync();
        if (m_file >= 0) {
            SettleMovie("/proc/self/fd/" + std::to_string(m_file));
        }
    }

private:
    int m_folder;
    std::string m_name;
    int m_file = -1; // open until this process ends
    off_t m_synced = 0;
};

void Keep(Recording recording, pid_t parent)
{
    // Whoever ends all processes of a session wants the recording nevertheless.
    for (const int signal : {SIGTERM, SIGXFSZ}) {
        std::signal(signal, SIG_IGN);
    }
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, parentEnded);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    prctl(PR_SET_PDEATHSIG, parentEnded);
    while (getppid() == parent && sigtimedwait(&signals, nullptr, &interval) != parentEnded) {
        recording.Sync();
    }
    recording.Settle();
}

} // namespace

void StartKeeper(const std::string& path)
{
    struct stat status = {};
    const size_t slash = path.rfind('/');
    const std::string parent = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    const int folder = open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0 && fstatat(folder, path.c_str() + slash + 1, &status, 0) != 0) {
        const pid_t self = getpid();
        StartCompanion(folder,
                       [&](int kept) { Keep(Recording(kept, path.substr(slash + 1)), self); });
    }
    close(folder);
}

} // namespace tool
