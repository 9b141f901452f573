#include "tool/mp4/movie_box.h"

#include "tool/mp4/box_writer.h"
#include "tool/mp4/edit_list.h"
#include "tool/mp4/fragments.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/sample_tables.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace tool {
namespace {

constexpr uint64_t most32 = std::numeric_limits<uint32_t>::max();

struct DoubtfulMovie : std::runtime_error
{
    DoubtfulMovie() : std::runtime_error("doubtful movie box") {}
};

// A number in a box with two versions, with 4-byte or 8-byte times and durations.
struct Field
{
    size_t narrow;   // offset in version 0
    size_t wide;     // and in version 1
    size_t wideSize; // bytes
};
constexpr Field timescaleField{12, 20, 4}; // in mvhd and mdhd
constexpr Field durationField{16, 24, 8};
constexpr Field trackIdField{12, 20, 4}; // in tkhd
constexpr Field trackDurationField{20, 28, 8};

bool IsWide(const std::string& box)
{
    return !box.empty() && box[0] == 1;
}

uint64_t Get(const std::string& box, size_t offset, size_t size)
{
    if (offset + size > box.size()) {
        throw DoubtfulMovie();
    }
    return BigEndian(std::string_view(box).substr(offset, size));
}

void Put(std::string& box, size_t offset, size_t size, uint64_t value)
{
    if (offset + size > box.size() || (size == 4 && value > most32)) {
        throw DoubtfulMovie();
    }
    ReplaceNumber(box, offset, value, size);
}

uint64_t Get(const std::string& box, const Field& field)
{
    return IsWide(box) ? Get(box, field.wide, field.wideSize) : Get(box, field.narrow, 4);
}

void Put(std::string& box, const Field& field, uint64_t value)
{
    IsWide(box) ? Put(box, field.wide, field.wideSize, value) : Put(box, field.narrow, 4, value);
}

// Copies the movie box and fills in durations and sample tables.
class MovieBoxWriter
{
public:
    MovieBoxWriter(FrugalFile& file, const FragmentedMovie& movie) : m_file(file), m_movie(movie) {}

    std::string Write();

private:
    std::string Content(const Box& box);
    Box Child(const Box& parent, const char* type);
    const std::vector<Sample>* SamplesOf(uint64_t id) const;
    uint64_t InMovieTimescale(uint64_t trackTicks) const;
    std::optional<EditList> EditListOf(const Box& track);
    void Copy(const Box& box, const std::string& content);
    void CopyTrack(const Box& box);
    void CopyMedia(const Box& box);
    void CopyMediaInformation(const Box& box);

    FrugalFile& m_file;
    const FragmentedMovie& m_movie;
    std::string m_bytes;
    uint64_t m_movieTimescale = 0; // ticks per second
    // The current track.
    const std::vector<Sample>* m_samples = nullptr;
    uint64_t m_mediaTimescale = 0;
    uint64_t m_mediaDuration = 0;  // in the track's ticks
    uint64_t m_compositionEnd = 0; // end of its last frame, in the track's ticks
    uint64_t m_trackDuration = 0;  // with its editList, in the movie's ticks
    uint64_t m_movieDuration = 0;  // of all tracks so far
};

std::string MovieBoxWriter::Content(const Box& box)
{
    constexpr uint64_t most = 1U << 20U; // descriptions have a few hundred bytes
    std::string content(std::min(box.Size(), most + 1), '\0');
    if (content.size() > most || !m_file.Read(box.begin, content.data(), content.size())) {
        throw DoubtfulMovie();
    }
    return content;
}

Box MovieBoxWriter::Child(const Box& parent, const char* type)
{
    if (const auto child = FindChild(m_file, parent, BoxType(type))) {
        return *child;
    }
    throw DoubtfulMovie();
}

void MovieBoxWriter::Copy(const Box& box, const std::string& content)
{
    const OpenBox copy(m_bytes, box.type);
    m_bytes += content;
}

// Null if nothing of the track would be shown.
const std::vector<Sample>* MovieBoxWriter::SamplesOf(uint64_t id) const
{
    for (const FragmentedTrack& track : m_movie.tracks) {
        if (track.id == id && !track.samples.empty()) {
            return &track.samples;
        }
    }
    return nullptr;
}

// Converts a duration of the current track to the movie's ticks, rounded up.
uint64_t MovieBoxWriter::InMovieTimescale(uint64_t trackTicks) const
{
    if (m_movieTimescale == 0 || m_mediaTimescale == 0 ||
        trackTicks > (std::numeric_limits<uint64_t>::max() - m_mediaTimescale) / m_movieTimescale) {
        throw DoubtfulMovie();
    }
    return (trackTicks * m_movieTimescale + m_mediaTimescale - 1) / m_mediaTimescale;
}

// What the track's own edit list shows of all its samples. Sets the track's duration.
std::optional<EditList> MovieBoxWriter::EditListOf(const Box& track)
{
    const auto edits = FindChild(m_file, track, BoxType("edts"));
    if (!edits) {
        m_trackDuration = InMovieTimescale(m_compositionEnd);
        return std::nullopt;
    }
    auto list = ReadEditList(m_file, Child(*edits, "elst"));
    if (!list) {
        throw DoubtfulMovie(); // a recording has at most an empty edit before its media
    }
    const uint64_t hidden = std::min(list->mediaTime, m_compositionEnd);
    list->segmentDuration = InMovieTimescale(m_compositionEnd - hidden);
    m_trackDuration = list->segmentDuration > 0 ? list->emptyDuration + list->segmentDuration : 0;
    return list;
}

// Leaves out a track without samples, as in a recording interrupted at its start.
void MovieBoxWriter::CopyTrack(const Box& box)
{
    std::string header = Content(Child(box, "tkhd"));
    m_samples = SamplesOf(Get(header, trackIdField));
    if (m_samples == nullptr) {
        return;
    }
    if (m_samples->front().decodeTime != 0) {
        throw DoubtfulMovie();
    }
    m_mediaTimescale = Get(Content(Child(Child(box, "mdia"), "mdhd")), timescaleField);
    m_mediaDuration = m_samples->back().decodeTime + m_samples->back().duration;
    m_compositionEnd = 0;
    for (const Sample& sample : *m_samples) {
        const int64_t end =
            static_cast<int64_t>(sample.decodeTime + sample.duration) + sample.compositionOffset;
        m_compositionEnd =
            std::max(m_compositionEnd, static_cast<uint64_t>(std::max<int64_t>(end, 0)));
    }
    const auto editList = EditListOf(box);
    if (m_trackDuration == 0) {
        return;
    }
    Put(header, trackDurationField, m_trackDuration);
    m_movieDuration = std::max(m_movieDuration, m_trackDuration);

    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (child->type == BoxType("tkhd")) {
            Copy(*child, header);
        } else if (child->type == BoxType("edts")) {
            AppendEditList(m_bytes, editList.value_or(EditList()));
        } else if (child->type == BoxType("mdia")) {
            CopyMedia(*child);
        } else {
            Copy(*child, Content(*child));
        }
    }
}

void MovieBoxWriter::CopyMedia(const Box& box)
{
    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (child->type == BoxType("mdhd")) {
            std::string header = Content(*child);
            Put(header, durationField, m_mediaDuration);
            Copy(*child, header);
        } else if (child->type == BoxType("minf")) {
            CopyMediaInformation(*child);
        } else {
            Copy(*child, Content(*child));
        }
    }
}

// Copies the box that contains the tables.
void MovieBoxWriter::CopyMediaInformation(const Box& box)
{
    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto child = walk.Next()) {
        if (child->type != BoxType("stbl")) {
            Copy(*child, Content(*child));
            continue;
        }
        const OpenBox tables(m_bytes, child->type);
        const Box description = Child(*child, "stsd");
        Copy(description, Content(description));
        if (!AppendSampleTables(m_bytes, *m_samples)) {
            throw DoubtfulMovie();
        }
    }
}

// The header comes first, but its duration is known last.
std::string MovieBoxWriter::Write()
{
    std::string header = Content(Child(m_movie.movieBox, "mvhd"));
    m_movieTimescale = Get(header, timescaleField);
    BoxWalk walk(m_file, m_movie.movieBox);
    while (const auto child = walk.Next()) {
        if (child->type == BoxType("trak")) {
            CopyTrack(*child);
        } else if (child->type != BoxType("mvhd") && child->type != BoxType("mvex")) {
            Copy(*child, Content(*child));
        }
    }
    if (m_movieDuration == 0) {
        throw DoubtfulMovie();
    }
    Put(header, durationField, m_movieDuration);
    std::string movieBox;
    {
        const OpenBox box(movieBox, m_movie.movieBox.type);
        {
            const OpenBox first(movieBox, BoxType("mvhd"));
            movieBox += header;
        }
        movieBox += m_bytes;
    }
    return movieBox;
}

} // namespace

std::string MovieBox(FrugalFile& file, const FragmentedMovie& movie)
{
    try {
        return MovieBoxWriter(file, movie).Write();
    } catch (const DoubtfulMovie&) {
        return {};
    }
}

} // namespace tool
