// Which ffmpeg does the work, and what it understands.
#pragma once

#include <string>
#include <vector>

namespace tool {

// The places to look at, best first: `chosen` alone when it is not empty, else "ffmpeg" in
// `ownDirectory` and in each directory of `path` (divided by colons).
std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path);

// The first of these that is a file and may be run; empty when none is.
std::string FirstRunnable(const std::vector<std::string>& places);

// The ffmpeg to run: LUMENFOLD_FFMPEG, else one beside this program, else the one in PATH. Empty
// when there is none.
std::string FindFfmpeg();

// Whether the program file holds this option's name. Asking the program itself would cost a start
// of it; its table of options lies in the file as text. False when the file cannot be read or is a
// script.
bool KnowsOption(const std::string& program, const std::string& option);

// Runs the program to its end, without input, and gives what it printed on its standard error.
std::string Ask(const std::string& program, const std::vector<std::string>& arguments);

// Becomes the program; returns only when that fails, with errno set.
void Become(const std::string& program, const std::vector<std::string>& arguments);

} // namespace tool
