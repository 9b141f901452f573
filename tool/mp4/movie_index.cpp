#include "tool/mp4/movie_index.h"

#include "tool/mp4/box_writer.h"
#include "tool/mp4/frugal_file.h"
#include "tool/mp4/movie_pieces.h"
#include "tool/mp4/sample_tables.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace tool {
namespace {

constexpr uint64_t most32 = std::numeric_limits<uint32_t>::max();

struct Doubt : std::runtime_error
{
    Doubt() : std::runtime_error("doubtful movie box") {}
};

// A number in a box with two versions, with 4-byte or 8-byte times and durations.
struct Field
{
    size_t narrow; // offset
    size_t wide;
    size_t wideSize; // bytes
};
constexpr Field headerScale{12, 20, 4}; // in mvhd and mdhd
constexpr Field headerLength{16, 24, 8};
constexpr Field trackId{12, 20, 4}; // in tkhd
constexpr Field trackLength{20, 28, 8};

bool IsWide(const std::string& box)
{
    return !box.empty() && box[0] == 1;
}

uint64_t Get(const std::string& box, size_t place, size_t size)
{
    if (place + size > box.size()) {
        throw Doubt();
    }
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value = value << 8U | static_cast<uint8_t>(box[place + i]);
    }
    return value;
}

void Put(std::string& box, size_t place, size_t size, uint64_t value)
{
    if (place + size > box.size() || (size == 4 && value > most32)) {
        throw Doubt();
    }
    ReplaceNumber(box, place, value, size);
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
class IndexWriter
{
public:
    IndexWriter(FrugalFile& file, const PiecedMovie& movie) : m_file(file), m_movie(movie) {}

    std::string Write();

private:
    std::string Content(const Box& box);
    Box Inner(const Box& box, const char* type);
    const std::vector<Sample>* SamplesOf(uint64_t id) const;
    uint64_t Shown(uint64_t trackTicks) const;
    std::string EditsOf(const Box& track);
    void Copy(const Box& box, const std::string& content);
    void CopyTrack(const Box& box);
    void CopyMedia(const Box& box);
    void CopyMediaParts(const Box& box);

    FrugalFile& m_file;
    const PiecedMovie& m_movie;
    std::string m_bytes;
    uint64_t m_movieScale = 0; // ticks per second
    // The current track.
    const std::vector<Sample>* m_samples = nullptr;
    uint64_t m_trackScale = 0;
    uint64_t m_mediaLength = 0; // in the track's ticks
    uint64_t m_shownEnd = 0;    // end of its last frame, in the track's ticks
    uint64_t m_shownLength = 0; // with its edits, in the movie's ticks
    uint64_t m_longest = 0;     // of all tracks so far
};

std::string IndexWriter::Content(const Box& box)
{
    constexpr uint64_t most = 1U << 20U; // descriptions have a few hundred bytes
    std::string content(std::min(box.Size(), most + 1), '\0');
    if (content.size() > most || !m_file.Read(box.begin, content.data(), content.size())) {
        throw Doubt();
    }
    return content;
}

Box IndexWriter::Inner(const Box& box, const char* type)
{
    BoxWalk walk(m_file, box);
    while (const auto inner = walk.Next()) {
        if (inner->type == BoxType(type)) {
            return *inner;
        }
    }
    throw Doubt();
}

void IndexWriter::Copy(const Box& box, const std::string& content)
{
    const OpenBox copy(m_bytes, box.type);
    m_bytes += content;
}

// Null if nothing of the track would be shown.
const std::vector<Sample>* IndexWriter::SamplesOf(uint64_t id) const
{
    for (const PiecedTrack& track : m_movie.tracks) {
        if (track.id == id && !track.samples.empty()) {
            return &track.samples;
        }
    }
    return nullptr;
}

// Converts a duration of the current track to the movie's ticks, rounded up.
uint64_t IndexWriter::Shown(uint64_t trackTicks) const
{
    if (m_movieScale == 0 || m_trackScale == 0 ||
        trackTicks > (std::numeric_limits<uint64_t>::max() - m_trackScale) / m_movieScale) {
        throw Doubt();
    }
    return (trackTicks * m_movieScale + m_trackScale - 1) / m_trackScale;
}

// The last edit covers everything. A recording has at most an empty edit before it.
std::string IndexWriter::EditsOf(const Box& track)
{
    BoxWalk walk(m_file, track);
    m_shownLength = Shown(m_shownEnd);
    while (const auto part = walk.Next()) {
        if (part->type != BoxType("edts")) {
            continue;
        }
        std::string edits = Content(Inner(*part, "elst"));
        const size_t size = IsWide(edits) ? 8 : 4;
        const size_t entry = 2 * size + 4;
        const uint64_t count = Get(edits, 4, 4);
        if (count == 0 || count > 2 || edits.size() < 8 + count * entry) {
            throw Doubt();
        }
        const size_t last = 8 + (count - 1) * entry;
        const uint64_t hidden = Get(edits, last + size, size);
        m_shownLength = hidden < m_shownEnd ? Shown(m_shownEnd - hidden) : 0;
        Put(edits, last, size, m_shownLength);
        m_shownLength += count == 2 && m_shownLength > 0 ? Get(edits, 8, size) : 0;
        return edits;
    }
    return {};
}

// Leaves out a track without samples, as in a recording interrupted at its start.
void IndexWriter::CopyTrack(const Box& box)
{
    std::string header = Content(Inner(box, "tkhd"));
    m_samples = SamplesOf(Get(header, trackId));
    if (m_samples == nullptr) {
        return;
    }
    if (m_samples->front().time != 0) {
        throw Doubt();
    }
    m_trackScale = Get(Content(Inner(Inner(box, "mdia"), "mdhd")), headerScale);
    m_mediaLength = m_samples->back().time + m_samples->back().duration;
    m_shownEnd = 0;
    for (const Sample& sample : *m_samples) {
        const int64_t end = static_cast<int64_t>(sample.time + sample.duration) + sample.shift;
        m_shownEnd = std::max(m_shownEnd, static_cast<uint64_t>(std::max<int64_t>(end, 0)));
    }
    const std::string edits = EditsOf(box);
    if (m_shownLength == 0) {
        return;
    }
    Put(header, trackLength, m_shownLength);
    m_longest = std::max(m_longest, m_shownLength);

    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto part = walk.Next()) {
        if (part->type == BoxType("tkhd")) {
            Copy(*part, header);
        } else if (part->type == BoxType("edts")) {
            const OpenBox outer(m_bytes, part->type);
            const OpenBox inner(m_bytes, BoxType("elst"));
            m_bytes += edits;
        } else if (part->type == BoxType("mdia")) {
            CopyMedia(*part);
        } else {
            Copy(*part, Content(*part));
        }
    }
}

void IndexWriter::CopyMedia(const Box& box)
{
    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto part = walk.Next()) {
        if (part->type == BoxType("mdhd")) {
            std::string header = Content(*part);
            Put(header, headerLength, m_mediaLength);
            Copy(*part, header);
        } else if (part->type == BoxType("minf")) {
            CopyMediaParts(*part);
        } else {
            Copy(*part, Content(*part));
        }
    }
}

// Copies the box that contains the tables.
void IndexWriter::CopyMediaParts(const Box& box)
{
    const OpenBox copy(m_bytes, box.type);
    BoxWalk walk(m_file, box);
    while (const auto part = walk.Next()) {
        if (part->type != BoxType("stbl")) {
            Copy(*part, Content(*part));
            continue;
        }
        const OpenBox tables(m_bytes, part->type);
        const Box description = Inner(*part, "stsd");
        Copy(description, Content(description));
        if (!AppendSampleTables(m_bytes, *m_samples)) {
            throw Doubt();
        }
    }
}

// The header comes first, but its duration is known last.
std::string IndexWriter::Write()
{
    std::string header = Content(Inner(m_movie.movie, "mvhd"));
    m_movieScale = Get(header, headerScale);
    BoxWalk walk(m_file, m_movie.movie);
    while (const auto part = walk.Next()) {
        if (part->type == BoxType("trak")) {
            CopyTrack(*part);
        } else if (part->type != BoxType("mvhd") && part->type != BoxType("mvex")) {
            Copy(*part, Content(*part));
        }
    }
    if (m_longest == 0) {
        throw Doubt();
    }
    Put(header, headerLength, m_longest);
    std::string index;
    {
        const OpenBox box(index, m_movie.movie.type);
        {
            const OpenBox first(index, BoxType("mvhd"));
            index += header;
        }
        index += m_bytes;
    }
    return index;
}

} // namespace

std::string MovieIndex(FrugalFile& file, const PiecedMovie& movie)
{
    try {
        return IndexWriter(file, movie).Write();
    } catch (const Doubt&) {
        return {};
    }
}

} // namespace tool
