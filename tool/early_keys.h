#pragma once

#include <chrono>
#include <string>

namespace tool {

// Takes what is typed into `input` until ffmpeg has written something into `file`, and gives it
// back to `input` then, after `patience` at the latest. ffmpeg looks at its keyboard before it
// takes the first picture: told to quit then, it leaves a file without a stream, which no player
// opens. Works beside ffmpeg, in a process of its own that ends when it has given back, so that
// nothing stands between the recorder and ffmpeg later. Does nothing when `input` is no pipe, nor
// when there is something in the file before: ffmpeg asks then whether it may be overwritten.
void HoldEarlyKeys(int input, const std::string& file, std::chrono::milliseconds patience);

} // namespace tool
