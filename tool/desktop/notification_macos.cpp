// Notifications through the system's interpreter for scripts: a program without a bundle of its own
// has no other way.
#include "tool/desktop/notification.h"
#include "tool/system/process.h"

#include <chrono>
#include <csignal>
#include <thread>

namespace tool {
namespace {

constexpr std::chrono::seconds longestWait{5};
constexpr std::chrono::milliseconds pollInterval{50};

} // namespace

void Notify(const std::string& summary, const std::string& body)
{
    // The texts are arguments, so nothing in them is taken for a part of the script.
    Program script{"/usr/bin/osascript",
                   {"-e", "on run texts", "-e",
                    "display notification (item 2 of texts) with title (item 1 of texts)", "-e",
                    "end run", summary, body}};
    script.input = script.output = script.error = Program::nowhere;
    auto process = Process::Start(script);
    const auto end = std::chrono::steady_clock::now() + longestWait;
    while (process && !process->ExitCode()) {
        if (std::chrono::steady_clock::now() >= end) {
            process->Signal(SIGKILL);
        }
        std::this_thread::sleep_for(pollInterval);
    }
}

} // namespace tool
