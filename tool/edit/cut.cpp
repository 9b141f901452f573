#include "tool/edit/cut.h"

#include "tool/edit/torn_input.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie.h"

namespace tool {
namespace {

// Seeking to a start after the end would give the last frames.
bool BeginsInside(const Cut& cut)
{
    constexpr int64_t second = 1000000;
    FrugalFile file(cut.source, movieAllowance);
    const auto movie = ReadMovie(file);
    return !movie || !movie->duration || movie->fragmented ||
           cut.start < (*movie->duration + second - 1) / second;
}

// The recorder's command.
Arguments PlainCut(const Cut& cut)
{
    return {"-i",           cut.source,
            "-ss",          std::to_string(cut.start),
            "-t",           std::to_string(cut.length),
            "-codec",       "copy",
            cut.destination};
}

} // namespace

Arguments SeekingCut(const Cut& cut)
{
    return {"-ss",          std::to_string(cut.start),  "-i",     cut.source,
            "-t",           std::to_string(cut.length), "-codec", "copy",
            cut.destination};
}

int RunCut(const std::string& ffmpeg, const Cut& cut)
{
    const Arguments arguments = BeginsInside(cut) ? SeekingCut(cut) : PlainCut(cut);
    return Become(ffmpeg, WithoutTornEnds(arguments));
}

} // namespace tool
