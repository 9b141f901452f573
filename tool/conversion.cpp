#include "tool/conversion.h"

#include <algorithm>
#include <cstdlib>

namespace tool {
namespace {

// What nobody notices at a join, in microseconds.
constexpr int64_t hardlyHidden = 100000;

// Joined as they are, the next movie begins where this one's picture ends. Sound that ends before
// leaves a pause, as the end of a recording does; sound beyond it is lost.
constexpr int64_t longestPause = 1000000;
constexpr int64_t longestLoss = 200000;

bool IsOneOf(const std::string& codec, std::initializer_list<const char*> codecs)
{
    return std::any_of(codecs.begin(), codecs.end(),
                       [&](const char* each) { return codec == each; });
}

bool EndTogether(const Movie& movie)
{
    std::optional<int64_t> picture;
    std::optional<int64_t> sound;
    for (const MovieTrack& track : movie.tracks) {
        if (track.end) {
            auto& end = track.kind == TrackKind::Picture ? picture : sound;
            end = std::max(end.value_or(*track.end), *track.end);
        }
    }
    return !picture || !sound ||
           (*sound - *picture <= longestLoss && *picture - *sound <= longestPause);
}

} // namespace

std::optional<Conversion> ReadConversion(const Arguments& arguments)
{
    const Arguments between = {"-vcodec", "copy", "-acodec", "copy", "-vbsf", "h264_mp4toannexb"};
    if (arguments.size() != between.size() + 3 || arguments[0] != "-i" ||
        !std::equal(between.begin(), between.end(), arguments.begin() + 2)) {
        return std::nullopt;
    }
    return Conversion{arguments[1], arguments.back()};
}

Intermediate ChooseIntermediate(const std::optional<Movie>& movie)
{
    if (!movie) {
        return Intermediate::AsAsked;
    }
    auto chosen = Intermediate::AsAsked;
    for (const MovieTrack& track : movie->tracks) {
        const bool isPicture = track.kind == TrackKind::Picture;
        if (track.kind == TrackKind::Other || track.codec.empty()) {
            continue;
        }
        const bool known = isPicture ? IsOneOf(track.codec, {"avc1", "avc3", "hvc1", "hev1"})
                                     : track.codec == "aac ";
        if (!known || track.turned || track.pieced || track.hidden > hardlyHidden) {
            return Intermediate::Movie;
        }
        if (IsOneOf(track.codec, {"hvc1", "hev1"})) {
            chosen = Intermediate::TransportStream;
        }
    }
    return EndTogether(*movie) ? chosen : Intermediate::Movie;
}

Arguments TranslateConversion(const Arguments& arguments, Intermediate intermediate)
{
    const auto conversion = ReadConversion(arguments);
    if (!conversion || intermediate == Intermediate::AsAsked) {
        return TranslatePassThrough(arguments);
    }
    Arguments result = {"-i", conversion->source, "-vcodec", "copy", "-acodec", "copy"};
    if (intermediate == Intermediate::Movie) {
        // Under the name of a transport stream all the same: readers look at what is in it.
        result.insert(result.end(), {"-f", "mp4"});
    }
    result.push_back(conversion->destination);
    return result;
}

} // namespace tool
