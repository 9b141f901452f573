#include "tool/edit/copyable_part.h"

#include "tool/edit/source_file.h"
#include "tool/mp4/frugal_file.h"
#include "tool/system/one_of.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace tool {
namespace {

// Seconds too short to notice at a join.
constexpr double hardlyHidden = 0.1;

// The next movie begins where this one's video ends. Sound that ends earlier leaves a pause, as at
// the end of a recording. Sound that ends later is cut off.
constexpr double longestPause = 1;
constexpr double longestLoss = 0.2;

// More than what is lost when the end of an edit is rounded to the movie's time scale, in seconds.
constexpr double rounding = 0.002;

// Keeps sums of ticks within 64 bits.
constexpr uint64_t mostTicks = 1ULL << 48U;

constexpr double microsecond = 1e-6;

// When a track is shown, in its ticks since the movie's start.
struct Extent
{
    int64_t start = 0;
    int64_t end = 0;
};

double Seconds(int64_t ticks, const MovieTrack& track)
{
    return static_cast<double>(ticks) / track.timescale;
}

int64_t Ticks(int64_t microseconds, const MovieTrack& track)
{
    return std::llround(static_cast<double>(microseconds) * microsecond * track.timescale);
}

// An "avc3" or "hev1" track can have its parameter sets in the samples, where nobody compares them.
bool HasParameterSets(const MovieTrack& track)
{
    const std::string_view bytes = track.configuration;
    if (IsOneOf(std::array{"avc1", "avc3"}, track.codec)) {
        constexpr size_t count = 5;
        return bytes.size() > count && (static_cast<uint8_t>(bytes[count]) & 0x1fU) != 0;
    }
    constexpr size_t count = 22;
    return IsOneOf(std::array{"hvc1", "hev1"}, track.codec) && bytes.size() > count &&
           bytes[count] != 0;
}

bool CanBeCopied(const MovieTrack& track)
{
    return !track.transformed && !track.unusualEdits &&
           (track.kind == TrackKind::Video ? HasParameterSets(track)
                                           : track.codec == "aac " && !track.configuration.empty());
}

std::optional<Extent> OrdinaryExtent(const MovieTrack& track)
{
    if (!track.start || !track.end || track.mediaDuration > mostTicks) {
        return std::nullopt;
    }
    Extent extent;
    extent.start = Ticks(*track.start, track);
    extent.end = extent.start + static_cast<int64_t>(track.mediaDuration - track.trimmedTicks);
    const double shownEnd = static_cast<double>(*track.end) * microsecond;
    if (track.kind == TrackKind::Audio) {
        extent.end = std::min(extent.end, Ticks(*track.end, track));
    } else if (Seconds(extent.end, track) - shownEnd > rounding) {
        return std::nullopt; // the edit list hides the end
    }
    const bool whole = Seconds(static_cast<int64_t>(track.trimmedTicks), track) <= hardlyHidden;
    return whole ? std::optional(extent) : std::nullopt;
}

std::optional<Extent> FragmentedExtent(const MovieTrack& track, const FragmentedMovie& movie)
{
    const auto found =
        std::find_if(movie.tracks.begin(), movie.tracks.end(),
                     [&](const FragmentedTrack& other) { return other.id == track.id; });
    if (found == movie.tracks.end() || track.trimmedTicks > mostTicks) {
        return std::nullopt;
    }
    Extent extent{std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min()};
    for (const Sample& sample : found->samples) {
        if (sample.decodeTime > mostTicks) {
            return std::nullopt;
        }
        const int64_t shown = Ticks(track.emptyStart, track) +
                              static_cast<int64_t>(sample.decodeTime) + sample.compositionOffset -
                              static_cast<int64_t>(track.trimmedTicks);
        extent.start = std::min(extent.start, shown);
        extent.end = std::max(extent.end, shown + sample.duration);
    }
    const bool whole = extent.start < extent.end && Seconds(-extent.start, track) <= hardlyHidden;
    return whole ? std::optional(extent) : std::nullopt;
}

// Adds the tracks up to what decides about a join.
class PartReader
{
public:
    PartReader(const Movie& movie, const std::optional<FragmentedMovie>& fragments)
        : m_movie(movie),
          m_fragments(fragments)
    {
    }
    std::optional<CopyablePart> Read();

private:
    bool ReadTrack(const MovieTrack& track);
    bool EndsTogether() const;

    const Movie& m_movie;
    const std::optional<FragmentedMovie>& m_fragments;
    CopyablePart m_part;
    const MovieTrack* m_pLeading = nullptr; // the first video, or the first sound if there is none
    Extent m_leading;
    double m_start = 0; // seconds
    std::optional<double> m_videoEnd;
    std::optional<double> m_audioEnd;
};

bool PartReader::ReadTrack(const MovieTrack& track)
{
    m_part.format.push_back(
        {track.kind, track.codec, track.configuration, track.timescale, track.width, track.height});
    if (track.kind == TrackKind::Other) {
        return true; // not copied
    }
    const auto extent = !CanBeCopied(track) ? std::nullopt
                        : m_fragments       ? FragmentedExtent(track, *m_fragments)
                                            : OrdinaryExtent(track);
    if (!extent) {
        return false;
    }
    const bool isVideo = track.kind == TrackKind::Video;
    bool& has = isVideo ? m_part.hasVideo : m_part.hasAudio;
    // ffmpeg takes the earliest track's start for the start of the part.
    const double start = Seconds(extent->start, track);
    m_start = m_part.hasVideo || m_part.hasAudio ? std::min(m_start, start) : start;
    if (!has) {
        (isVideo ? m_videoEnd : m_audioEnd) = Seconds(extent->end, track);
        if (isVideo || m_pLeading == nullptr) {
            m_pLeading = &track;
            m_leading = *extent;
        }
    }
    has = true;
    return true;
}

bool PartReader::EndsTogether() const
{
    return !m_videoEnd || !m_audioEnd ||
           (*m_audioEnd - *m_videoEnd <= longestLoss && *m_videoEnd - *m_audioEnd <= longestPause);
}

std::optional<CopyablePart> PartReader::Read()
{
    const auto& tracks = m_movie.tracks;
    m_part.fragmented = m_movie.fragmented;
    if (!std::all_of(tracks.begin(), tracks.end(), [&](const auto& t) { return ReadTrack(t); }) ||
        m_pLeading == nullptr || !EndsTogether()) {
        return std::nullopt;
    }
    // In a fragmented movie the join asks ffmpeg to count from the movie's start.
    const int64_t begin = m_movie.fragmented ? 0 : std::llround(m_start * m_pLeading->timescale);
    if (m_leading.end <= begin) {
        return std::nullopt;
    }
    m_part.ticks = static_cast<uint64_t>(m_leading.end - begin);
    m_part.timescale = m_pLeading->timescale;
    return m_part;
}

} // namespace

std::optional<CopyablePart> DescribePart(const Movie& movie,
                                         const std::optional<FragmentedMovie>& fragments)
{
    return movie.fragmented == fragments.has_value() ? PartReader(movie, fragments).Read()
                                                     : std::nullopt;
}

std::optional<CopyablePart> ReadCopyablePart(const SourceFile& source)
{
    FrugalFile file(source.Path(), movieAllowance, source.size);
    const auto movie = ReadMovie(file);
    if (!movie) {
        return std::nullopt;
    }
    std::optional<FragmentedMovie> fragments;
    if (movie->fragmented) {
        FrugalFile whole(source.Path(), std::numeric_limits<uint64_t>::max(), source.size);
        fragments = ReadFragments(whole);
    }
    return DescribePart(*movie, fragments);
}

} // namespace tool
