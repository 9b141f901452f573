// Writes the index of a movie: a "moov" box with tables of all samples.
#pragma once

#include <string>

namespace tool {

class FrugalFile;
struct PiecedMovie;

// Builds the index from the file's own movie box and the samples found in its fragments. Returns an
// empty string if that box is damaged or a number is too large for it.
std::string MovieIndex(FrugalFile& file, const PiecedMovie& movie);

} // namespace tool
