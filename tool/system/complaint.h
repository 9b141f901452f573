#pragma once

#include <string>

namespace tool {

// Exit codes of `tool` itself.
constexpr int failed = 1;
constexpr int noProgram = 127;

// Prints the sentence, given without its full stop, as one line on standard error. Returns `code`.
int Complain(const std::string& sentence, int code = failed);

} // namespace tool
