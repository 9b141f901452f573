#include "tool/edit/cut.h"

#include "tool/edit/job.h"
#include "tool/edit/torn_input.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <algorithm>

namespace tool {

namespace {

struct Source
{
    uint64_t bytes = 0;             // of the whole file
    std::optional<double> duration; // of the whole movie in seconds
};

Source Look(const std::string& path)
{
    FrugalFile file(path, movieAllowance);
    Source source;
    source.bytes = file.Size();
    const auto movie = ReadMovie(file);
    if (movie && movie->duration && !movie->fragmented) {
        source.duration = static_cast<double>(*movie->duration) / 1e6;
    }
    return source;
}

} // namespace

Arguments CutArguments(const Cut& cut, bool seeks)
{
    Arguments result = {"-i", cut.source};
    result.insert(seeks ? result.begin() : result.end(), {"-ss", std::to_string(cut.start)});
    result.insert(result.end(), {"-t", std::to_string(cut.length), "-codec", "copy"});
    return result;
}

// A cut that starts after the end is made as asked, and so is empty: seeking would give the last
// frames.
int RunCut(const std::string& ffmpeg, const Cut& cut)
{
    const Source source = Look(cut.source);
    const auto start = static_cast<double>(cut.start);
    auto seconds = static_cast<double>(cut.length);
    uint64_t bytes = 0;
    if (source.duration) {
        seconds = std::min(seconds, *source.duration - start);
        // Seconds may need half as much as others.
        const double share = std::clamp(seconds / *source.duration, 0.0, 1.0) / 2;
        bytes = static_cast<uint64_t>(share * static_cast<double>(source.bytes));
    }
    const bool seeks = start >= 0 && seconds > 0;
    return RunJob({.ffmpeg = ffmpeg,
                   .arguments = WithoutTornEnds(CutArguments(cut, seeks)),
                   .destination = cut.destination,
                   .seconds = seconds,
                   .bytes = bytes,
                   .ticks = 19}); // of 20: the last would tell the end too early
}

} // namespace tool
