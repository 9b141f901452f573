// Runs ffmpeg for a trim or a join.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace tool {

struct Job
{
    std::string ffmpeg;                 // the program's path
    std::vector<std::string> arguments; // without the output, its muxer and general options
    std::vector<int> inherited = {};    // descriptors that ffmpeg keeps, with their numbers
    std::string destination;            // of the result
    double seconds = 0;                 // length of the result; 0: unknown
    uint64_t bytes = 0;                 // it needs at least so much room; 0: unknown
    int ticks = 0;                      // the most chunks of output with "frame=" in them
};

// Runs it, unless the disk has no room for the result, and returns the exit code: 0 if there is a
// complete file. Otherwise nothing is left, and the last line of the output makes the recorder show
// a failure. The file never replaces another one: if its name is taken when it is complete, it gets
// a number.
//
// "q" on standard input, SIGINT, SIGTERM and SIGHUP cancel the job; the end of standard input does
// not. A job that takes longer than `longestRun` counts as successful from then on. It is finished
// by a process in a session of its own, also if this process or the recorder is killed.
//
// To be called while the process has one thread.
int RunJob(const Job& job);

// How much longer this program may run for the recorder: until `longestRun` after its start.
std::chrono::milliseconds TimeLeft();

// How long this program runs for a job at most: a second less than the recorder waits for it, so
// that the recorder can start the next one. Defined in an object file of its own, so that tests can
// be linked with a different value.
extern const std::chrono::milliseconds longestRun;

} // namespace tool
