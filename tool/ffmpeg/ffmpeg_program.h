// Finds and starts ffmpeg.
#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace tool {

// Whether the path is independent of the working directory.
bool IsAbsolute(const std::string& path);

// What differs between platforms.
struct SearchOrder
{
    bool ownFirst = false;            // the one beside this program comes before the chosen one
    std::vector<std::string> folders; // to look in after those of PATH
};
SearchOrder PlatformSearchOrder();

// The places to look for ffmpeg, best first: `chosen` if it is not empty, else "ffmpeg" in
// `ownDirectory` and in each directory of `path` (separated by colons). Leaves out relative paths
// and empty entries, because anybody could put a program into the working directory.
std::vector<std::string> FfmpegPlaces(const std::string& chosen, const std::string& ownDirectory,
                                      const std::string& path, const SearchOrder& order = {});

// The first of these that is an executable file, or empty.
std::string FirstRunnable(const std::vector<std::string>& places);

// The ffmpeg to run: LUMENFOLD_FFMPEG, else one beside this program, else the one in PATH or a
// usual folder; on macOS one beside this program comes first. Empty if there is none.
std::string FindFfmpeg();

// Why there is none.
std::string NoFfmpegReason();

enum class Stream { Output, Error };

struct AskOptions
{
    Stream stream = Stream::Error; // the answer
    std::chrono::milliseconds patience = std::chrono::seconds(30);
    std::vector<int> inherited = {};   // further descriptors that it gets, with their numbers
    std::function<bool()> goesOn = {}; // asked 20 times a second while nothing comes
};

// Runs the program without input and returns what it wrote to that stream, 1 MiB at most. A program
// that writes more, takes too long or is not to go on is killed. It ends with this process.
std::string Ask(const std::string& program, const std::vector<std::string>& arguments,
                const AskOptions& options = {});

// Replaces this process with the program. Returns only on failure: an exit code, after a message.
int Become(const std::string& program, const std::vector<std::string>& arguments);

} // namespace tool
