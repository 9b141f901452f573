#pragma once

#include <chrono>

namespace tool {

// How long the first picture may take. Without the permission to record the screen it never comes,
// and ffmpeg waits for it without looking at keys or signals.
extern const std::chrono::milliseconds firstPicturePatience;

} // namespace tool
