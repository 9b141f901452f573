// Writes the movie box ("moov") that makes a fragmented movie an ordinary one: with tables of all
// its samples.
#pragma once

#include <string>

namespace tool {

class FrugalFile;
struct FragmentedMovie;

// Builds it from the file's own movie box and the samples found in its fragments. Returns an
// empty string if that box is damaged or a number is too large for it.
std::string MovieBox(FrugalFile& file, const FragmentedMovie& movie);

} // namespace tool
