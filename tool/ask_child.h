#pragma once

#include <functional>
#include <string>

namespace tool {

// Runs `run` in a child process to its end. Gives what the child wrote into the descriptor that it
// was handed; empty when there can be no child.
std::string AskChild(const std::function<void(int)>& run);

} // namespace tool
