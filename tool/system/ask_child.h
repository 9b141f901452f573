#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>

namespace tool {

// Runs `run` in a child process. Returns what the child wrote to the descriptor it was given: 1 MiB
// at most, and an empty string if no child can be created. A child that takes longer than
// `patience` or writes more is killed.
std::string AskChild(const std::function<void(int)>& run,
                     std::chrono::milliseconds patience = std::chrono::seconds(30));

} // namespace tool
