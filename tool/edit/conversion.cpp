#include "tool/edit/conversion.h"

#include "tool/edit/copyable_part.h"
#include "tool/edit/movie_question.h"
#include "tool/edit/part_description.h"
#include "tool/edit/part_note.h"
#include "tool/edit/source_file.h"
#include "tool/system/complaint.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace tool {
namespace {

// Whether a join can use the movie. Complains if not.
bool IsMovie(const std::string& ffmpeg, const SourceFile& source, const std::string& name)
{
    if (const auto part = ReadCopyablePart(source); part && !part->fragmented) {
        return true; // an ordinary movie, whose headers leave no doubt
    }
    const auto answer = AskAboutMovies(ffmpeg, {source.Url()}, {source.file.Number()});
    if (!answer) {
        Complain("cancelled");
        return false;
    }
    const auto parts = ParseDescriptions(*answer);
    if (parts.empty()) {
        std::fwrite(answer->data(), 1, answer->size(), stderr);
        Complain(name + ": Invalid data: ffmpeg cannot read it");
        return false;
    }
    if (!parts.front().HasPicture() && !parts.front().HasSound()) {
        Complain(name + ": Invalid data: neither picture nor sound");
        return false;
    }
    return true;
}

} // namespace

int RunConversion(const std::string& ffmpeg, const Convert& convert)
{
    const auto source = OpenSource(convert.source);
    if (!source) {
        return Complain(convert.source + ": " + OpenFault(errno));
    }
    if (!IsMovie(ffmpeg, *source, convert.source)) {
        return failed;
    }
    std::error_code error;
    const std::string path = std::filesystem::absolute(convert.source, error).string();
    if (error || !WriteNote(convert.destination, {path, source->identity})) {
        const int cause = error ? error.value() : errno;
        return Complain(convert.destination + ": " + std::generic_category().message(cause));
    }
    std::fputs("frame=1\n", stderr);
    return 0;
}

} // namespace tool
