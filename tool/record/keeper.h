// The process that looks after the file of a recording while ffmpeg writes it.
#pragma once

#include <string>

namespace tool {

// Starts it as a child of this process, which then becomes ffmpeg. It flushes each fragment to
// disk. When ffmpeg has ended, for whatever reason, it settles the file and exits. Nobody waits for
// it. It leaves a file alone that ffmpeg has not opened. With `watchesSignals` it also sends ffmpeg
// a SIGTERM when a signal asks for the end (see end_signal.h). Returns false if it cannot be
// started.
bool StartKeeper(const std::string& path, bool watchesSignals);

} // namespace tool
