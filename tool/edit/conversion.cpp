#include "tool/edit/conversion.h"

#include "tool/edit/torn_input.h"
#include "tool/ffmpeg/ffmpeg_program.h"
#include "tool/mp4/frugal_file.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tool {
namespace {

// Too short to notice at a join, in microseconds.
constexpr int64_t hardlyHidden = 100000;

// In a join the next movie begins where this one's picture ends. Sound that ends earlier leaves a
// pause, as at the end of a recording. Sound that ends later is cut off.
constexpr int64_t longestPause = 1000000;
constexpr int64_t longestLoss = 200000;

constexpr std::array<std::string_view, 2> h264 = {"avc1", "avc3"};
constexpr std::array<std::string_view, 2> h265 = {"hvc1", "hev1"};

bool EndTogether(const Movie& movie)
{
    std::optional<int64_t> picture;
    std::optional<int64_t> sound;
    for (const MovieTrack& track : movie.tracks) {
        if (track.end) {
            auto& end = track.kind == TrackKind::Video ? picture : sound;
            end = std::max(end.value_or(*track.end), *track.end);
        }
    }
    return !picture || !sound ||
           (*sound - *picture <= longestLoss && *picture - *sound <= longestPause);
}

} // namespace

Intermediate ChooseIntermediate(const std::optional<Movie>& movie)
{
    if (!movie) {
        return Intermediate::AsAsked;
    }
    auto chosen = Intermediate::AsAsked;
    for (const MovieTrack& track : movie->tracks) {
        const bool isPicture = track.kind == TrackKind::Video;
        if (track.kind == TrackKind::Other || track.codec.empty()) {
            continue;
        }
        const bool known = isPicture ? IsOneOf(h264, track.codec) || IsOneOf(h265, track.codec)
                                     : track.codec == "aac ";
        if (!known || track.transformed || track.unusualEdits ||
            track.trimmedStart > hardlyHidden) {
            return Intermediate::Movie;
        }
        if (IsOneOf(h265, track.codec)) {
            chosen = Intermediate::TransportStream;
        }
    }
    return EndTogether(*movie) ? chosen : Intermediate::Movie;
}

Arguments ConversionCommand(const Convert& convert, Intermediate intermediate)
{
    Arguments result = {"-i", convert.source, "-vcodec", "copy", "-acodec", "copy"};
    if (intermediate == Intermediate::AsAsked) {
        result.insert(result.end(), {"-bsf:v", "h264_mp4toannexb"});
    } else if (intermediate == Intermediate::Movie) {
        // The name stays that of a transport stream; ffmpeg probes the content.
        result.insert(result.end(), {"-f", "mp4"});
    }
    result.push_back(convert.destination);
    return result;
}

int RunConversion(const std::string& ffmpeg, const Convert& convert)
{
    FrugalFile file(convert.source, movieAllowance);
    const Arguments command = ConversionCommand(convert, ChooseIntermediate(ReadMovie(file)));
    return Become(ffmpeg, WithoutTornEnds(command));
}

} // namespace tool
