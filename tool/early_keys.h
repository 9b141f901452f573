#pragma once

#include <chrono>
#include <string>

namespace tool {

// Puts a pipe of our own in the place of `input`: what is typed into the one that was there comes
// out of it, but not before ffmpeg has written something into `file`, or `patience` is over. ffmpeg
// looks at its keyboard before it takes the first picture: told to quit then, it leaves a file
// without a picture, which no player opens. A process beside ffmpeg passes the keys on until either
// side ends; the pipe is not shared with it, since whoever looked first would get the key.
// Does nothing when `input` is no pipe, nor when there is something in the file before: ffmpeg asks
// then whether it may be overwritten.
void HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience);

} // namespace tool
