// Turns a fragmented recording into an ordinary MP4.
#pragma once

#include <string>

namespace tool {

// Adds one index of all samples, in place: appends the index after the last fragment, then
// overwrites 16 bytes at the start so that everything before the index becomes mdat. The file is
// valid before, between and after these writes. Of an interrupted recording everything complete is
// kept. Returns false, with the file unchanged, if it is not a fragmented movie. Also returns false
// if the disk is full; then an incomplete last fragment is removed.
bool SettleMovie(const std::string& path);

} // namespace tool
