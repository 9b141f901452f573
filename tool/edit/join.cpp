#include "tool/edit/join.h"

#include "tool/edit/copying_join.h"
#include "tool/edit/encoding_join.h"
#include "tool/edit/job.h"
#include "tool/edit/movie_question.h"
#include "tool/edit/part_note.h"
#include "tool/ffmpeg/features.h"
#include "tool/system/complaint.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>

namespace tool {
namespace {

bool IsFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error);
}

std::vector<std::string> SplitAtBars(const std::string& list)
{
    std::vector<std::string> pieces;
    for (size_t at = 0; at < list.size();) {
        const size_t bar = std::min(list.find('|', at), list.size());
        pieces.push_back(list.substr(at, bar - at));
        at = bar + 1;
    }
    return pieces;
}

// How many of the pieces from `at` on make up the name of an existing file, or 1 if none do.
size_t PiecesOfName(const std::vector<std::string>& pieces, size_t at, std::string& name)
{
    name = pieces[at];
    std::string longer = name;
    for (size_t next = at + 1; !IsFile(longer); ++next) {
        if (next == pieces.size()) {
            return 1;
        }
        longer.append("|").append(pieces[next]);
        if (IsFile(longer)) {
            name = longer;
            return next - at + 1;
        }
    }
    return 1;
}

std::vector<std::string> UrlsOf(const std::vector<SourceFile>& sources)
{
    std::vector<std::string> urls;
    std::transform(sources.begin(), sources.end(), std::back_inserter(urls),
                   [](const SourceFile& source) { return source.Url(); });
    return urls;
}

// Completes the job. Returns false if the parts have to be encoded.
bool PlanCopy(const std::vector<SourceFile>& sources, Job& job)
{
    std::vector<CopyablePart> parts;
    for (const SourceFile& source : sources) {
        const auto part = ReadCopyablePart(source);
        if (!part || (!parts.empty() && part->format != parts.front().format)) {
            return false;
        }
        parts.push_back(*part);
        job.bytes += source.size;
    }
    constexpr double microsecond = 1e-6;
    job.seconds = static_cast<double>(BeginOfPart(parts, parts.size())) * microsecond;
    job.arguments = CopyingJoin(UrlsOf(sources), parts, FeaturesOf(job.ffmpeg).noiseDrop);
    return true;
}

// Completes the job. Returns false, after a message, if a part cannot be read.
bool PlanEncoding(const std::vector<SourceFile>& sources, Job& job)
{
    const std::vector<std::string> urls = UrlsOf(sources);
    const auto answer = AskAboutMovies(job.ffmpeg, urls, job.inherited);
    if (!answer) {
        Complain("cancelled");
        return false;
    }
    const auto parts = ParseDescriptions(*answer);
    if (parts.size() != urls.size()) {
        // ffmpeg's output says which part it cannot read, if it says anything.
        std::fwrite(answer->data(), 1, answer->size(), stderr);
        Complain("Invalid data: ffmpeg cannot read all parts");
        return false;
    }
    job.bytes = 0; // nobody knows
    job.seconds = 0;
    for (const PartDescription& part : parts) {
        job.seconds += part.duration;
    }
    job.arguments = EncodingJoin(urls, parts);
    return true;
}

std::optional<std::vector<SourceFile>> OpenParts(const std::vector<std::string>& notes)
{
    std::vector<SourceFile> sources;
    for (const std::string& note : notes) {
        std::string fault;
        auto source = OpenPart(note, fault);
        if (!source) {
            Complain(fault);
            return std::nullopt;
        }
        sources.push_back(std::move(*source));
    }
    return sources;
}

} // namespace

std::vector<std::string> SplitList(const std::string& list)
{
    const std::vector<std::string> pieces = SplitAtBars(list);
    std::vector<std::string> parts;
    for (size_t at = 0; at < pieces.size();) {
        std::string name;
        at += PiecesOfName(pieces, at, name);
        parts.push_back(name);
    }
    return parts;
}

std::optional<SourceFile> OpenPart(const std::string& note, std::string& fault)
{
    const auto read = ReadNote(note);
    if (!read) {
        fault = note + ": " + OpenFault(errno);
        return std::nullopt;
    }
    if (read->source.empty()) {
        fault = note + ": Invalid data: no conversion has written it";
        return std::nullopt;
    }
    auto source = OpenSource(read->source);
    if (!source) {
        fault = read->source + ": " + OpenFault(errno);
        return std::nullopt;
    }
    if (source->identity != read->identity) {
        fault = read->source + ": Invalid data: it has changed since its conversion";
        return std::nullopt;
    }
    return source;
}

int RunJoin(const std::string& ffmpeg, const Join& join)
{
    const std::vector<std::string> notes = SplitList(join.list);
    if (notes.empty()) {
        return Complain("Invalid data: the list of the join is empty");
    }
    const auto sources = OpenParts(notes);
    if (!sources) {
        return failed;
    }
    // Each conversion has made one of 20 ticks, and the last tick of all would tell the end early.
    Job job{.ffmpeg = ffmpeg,
            .arguments = {},
            .destination = join.destination,
            .ticks = 19 * static_cast<int>(notes.size()) + 19};
    for (const SourceFile& source : *sources) {
        job.inherited.push_back(source.file.Number());
    }
    return PlanCopy(*sources, job) || PlanEncoding(*sources, job) ? RunJob(job) : failed;
}

} // namespace tool
