// What a conversion leaves for the join: no copy of the movie, only which one it is.
#pragma once

#include "tool/system/file_identity.h"

#include <optional>
#include <string>
#include <string_view>

namespace tool {

struct PartNote
{
    std::string source;    // absolute path of the movie
    FileIdentity identity; // as the conversion found it
    bool operator==(const PartNote&) const = default;
};

std::string NoteText(const PartNote& note);

// Returns nothing if this is not a complete note. Its values can still be anybody's.
std::optional<PartNote> ParseNote(std::string_view text);

// Returns nothing, with errno, if there is no such file. A file that is no note gives one without a
// source.
std::optional<PartNote> ReadNote(const std::string& path);

// Writes a new file. Returns false, with errno and no file left, if it exists or cannot be written.
bool WriteNote(const std::string& path, const PartNote& note);

} // namespace tool
