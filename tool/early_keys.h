#pragma once

#include <chrono>

namespace tool {

// Takes what is typed into `input` during the first `time` and gives it back to `input` after that.
// ffmpeg looks at its keyboard before it takes the first picture: told to quit then, it leaves a
// file without a stream, which no player opens. Works beside ffmpeg, in a process of its own that
// ends after `time`, so that nothing stands between the recorder and ffmpeg later. Does nothing
// when `input` is no pipe.
void HoldEarlyKeys(int input, std::chrono::milliseconds time);

} // namespace tool
