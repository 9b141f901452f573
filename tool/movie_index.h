// The index of a movie: the box "moov" with a table of all samples.
#pragma once

#include <string>

namespace tool {

class FrugalFile;
struct PiecedMovie;

// Made of the movie box that the file has, and of the samples found in its pieces. Empty when that
// box is damaged or a number is too large for it.
std::string MovieIndex(FrugalFile& file, const PiecedMovie& movie);

} // namespace tool
