#pragma once

#include <string>

namespace tool {

// Renames a file within an open folder. Returns false if that fails, with EEXIST if the new name is
// taken: nothing is ever replaced.
bool RenameToFree(int folder, const std::string& from, const std::string& to);

// The same on file systems that cannot rename like that. For a moment the file has both names;
// where there are no links either, another program could take the name in between.
bool LinkToFree(int folder, const std::string& from, const std::string& to);

} // namespace tool
