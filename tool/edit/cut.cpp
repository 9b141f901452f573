#include "tool/edit/cut.h"

#include "tool/edit/job.h"
#include "tool/edit/torn_input.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

#include <algorithm>

namespace tool {

namespace {

// In seconds. Returns nothing if the headers do not say.
std::optional<double> DurationOf(const std::string& path)
{
    FrugalFile file(path, movieAllowance);
    const auto movie = ReadMovie(file);
    if (!movie || !movie->duration || movie->fragmented) {
        return std::nullopt;
    }
    return static_cast<double>(*movie->duration) / 1e6;
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
    const auto start = static_cast<double>(cut.start);
    auto seconds = static_cast<double>(cut.length);
    if (const auto end = DurationOf(cut.source)) {
        seconds = std::min(seconds, *end - start);
    }
    const bool seeks = start >= 0 && seconds > 0;
    return RunJob({.ffmpeg = ffmpeg,
                   .arguments = WithoutTornEnds(CutArguments(cut, seeks)),
                   .destination = cut.destination,
                   .seconds = seconds,
                   .ticks = 19}); // of 20: the last would tell the end too early
}

} // namespace tool
