#pragma once

#include <chrono>
#include <string>

namespace tool {

// Puts a pipe of our own in the place of `input`: what is typed into the one that was there comes
// out of it, but not before ffmpeg has written something into `file`, or `patience` is over. ffmpeg
// looks at its keyboard before it takes the first picture: told to quit then, it leaves a file
// without a picture, which no player opens. A process beside ffmpeg passes the keys on. It types
// "q" itself at the end of the input and when a signal asks for the end (see end_signal.h). Does
// nothing and returns false if `input` is not a pipe, or if the file has content already: ffmpeg
// then asks whether to overwrite it.
bool HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience);

} // namespace tool
