// Small files that one run of this program leaves for a later one.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tool {

// A directory that nobody else can write to, until the user logs out. Created if needed. Empty if
// there is none. Root working for a user does not use the user's runtime directory, because the
// user could not write to what root creates there.
std::filesystem::path OwnDirectory();

// The contents of a regular file of at most 1 MiB.
std::optional<std::string> ReadText(const std::filesystem::path& file);

// Writes a new file, which nobody else can read, and renames it: a reader sees either the old text
// or the new one.
// Failures are ignored.
void ReplaceText(const std::filesystem::path& file, const std::string& text);

} // namespace tool
