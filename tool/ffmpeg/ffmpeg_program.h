// Finds ffmpeg and determines what it supports.
#pragma once

#include <string>
#include <vector>

namespace tool {

// Whether the path is independent of the working directory.
bool IsAbsolute(const std::string& path);

// The places to look for ffmpeg, best first: `chosen` if it is not empty, else "ffmpeg" in
// `ownDirectory` and in each directory of `path` (separated by colons). Leaves out relative paths
// and empty entries, because anybody could put a program into the working directory.
std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path);

// The first of these that is an executable file, or empty.
std::string FirstRunnable(const std::vector<std::string>& places);

// The ffmpeg to run: LUMENFOLD_FFMPEG, else one beside this program, else the one in PATH. Empty if
// there is none.
std::string FindFfmpeg();

// Whether the program has this option. Searches the executable for the name, because running the
// program would take too long. Returns false if the file cannot be read or is a script.
bool KnowsOption(const std::string& program, const std::string& option);

// Runs the program without input and returns its standard error.
std::string Ask(const std::string& program, const std::vector<std::string>& arguments);

// Replaces this process with the program. Returns only on failure, with errno set.
void Become(const std::string& program, const std::vector<std::string>& arguments);

} // namespace tool
