// Makes an ordinary movie of one that was recorded in pieces.
#pragma once

#include <string>

namespace tool {

// Gives the movie one index of all its samples, in place: the index is written behind the last
// piece, then sixteen bytes at the beginning make everything before it plain data. Whatever happens
// in between, the file is the one or the other. A recording that was cut short keeps all that lies
// in the file whole. False, with the file as it was, when it is no movie in pieces or the disk is
// full.
bool SettleMovie(const std::string& path);

} // namespace tool
