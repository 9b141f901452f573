// Joins movies, each named by the note that its conversion has left.
#pragma once

#include "tool/command/command.h"
#include "tool/edit/copyable_part.h"
#include "tool/edit/source_file.h"

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The names in the list. One that contains the separator is found by checking which files exist.
std::vector<std::string> SplitList(const std::string& list);

// Opens the movie that the note in this file names. Returns nothing, with a sentence, if it cannot
// be read or is no longer what the conversion found.
std::optional<SourceFile> OpenPart(const std::string& note, std::string& fault);

// Copies parts that fit together and encodes others again, in one run of ffmpeg that reads the
// movies themselves. Returns an exit code; on failure after a message and without a file.
int RunJoin(const std::string& ffmpeg, const Join& join);

} // namespace tool
