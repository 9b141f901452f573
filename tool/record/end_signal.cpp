#include "tool/record/end_signal.h"

#include "tool/record/companion.h"

#include <csignal>
#include <fstream>
#include <string>
#include <sys/prctl.h>

namespace tool {

void KeepEndSignals()
{
    if (!IsIgnored(SIGHUP)) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGHUP);
        sigprocmask(SIG_BLOCK, &signals, nullptr);
        prctl(PR_SET_PDEATHSIG, SIGHUP);
    }
}

bool IsEndAsked(pid_t process)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        if (word == "ShdPnd:") {
            unsigned long long pending = 0; // bit 0 is signal 1
            status >> std::hex >> pending;
            return (pending >> (SIGHUP - 1) & 1) != 0;
        }
    }
    return false;
}

} // namespace tool
