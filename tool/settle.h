// Makes an ordinary movie of one that was recorded in pieces.
#pragma once

#include <string>

namespace tool {

// Gives the movie one index of all its samples, in place: the index is written behind the last
// piece, then sixteen bytes at the beginning make everything before it plain data. Whatever happens
// in between, the file is the one or the other. A recording that was cut short keeps all that lies
// in the file whole. False when it is no movie in pieces, with the file as it was; and when the
// disk is full, then without a last piece that was not written to its end.
bool SettleMovie(const std::string& path);

} // namespace tool
