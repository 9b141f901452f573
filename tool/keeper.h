// The process that looks after a recording's file while ffmpeg writes it.
#pragma once

#include <string>

namespace tool {

// Starts it as a child of this process, which is to become ffmpeg. It makes the disk have each
// piece that ffmpeg has written; when ffmpeg has ended, in whatever way, it makes an ordinary movie
// of the file, and ends itself. Nobody waits for it. A file that ffmpeg does not open for itself is
// left alone. With `watchesSignals` it also sends ffmpeg a SIGTERM when a signal asks for the end
// (see end_signal.h). Returns false if it cannot be started.
bool StartKeeper(const std::string& path, bool watchesSignals);

} // namespace tool
