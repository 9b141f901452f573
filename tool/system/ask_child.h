#pragma once

#include <functional>
#include <string>

namespace tool {

// Runs `run` in a child process and waits for it. Returns what the child wrote to the descriptor it
// was given, or an empty string if no child can be created.
std::string AskChild(const std::function<void(int)>& run);

} // namespace tool
