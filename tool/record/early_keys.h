#pragma once

#include <chrono>
#include <string>

namespace tool {

// Replaces `input` with a pipe of our own. Keys from the original input come through it, but only
// after ffmpeg has written to `file` or `patience` has passed. ffmpeg checks its keyboard before
// the first frame: told to quit then, it leaves a file without a picture, which no player opens. A
// process beside ffmpeg passes the keys on. It types "q" itself at the end of input, and when a
// signal asks for the end (see end_signal.h). Does nothing and returns false if `input` is not a
// pipe, or if the file already has content, because ffmpeg then asks whether to overwrite it.
bool HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience);

} // namespace tool
