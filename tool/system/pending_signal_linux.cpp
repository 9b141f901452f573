#include "tool/system/pending_signal.h"

#include <fstream>
#include <string>

namespace tool {

bool HasPendingSignal(pid_t process, int number)
{
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string word; status >> word;) {
        if (word == "ShdPnd:") {
            unsigned long long pending = 0; // bit 0 is signal 1
            status >> std::hex >> pending;
            return (pending >> (number - 1) & 1) != 0;
        }
    }
    return false;
}

} // namespace tool
