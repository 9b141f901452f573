#include "tool/mp4/movie_pieces.h"

#include "tool/mp4/frugal_file.h"

#include <algorithm>

namespace tool {
namespace {

constexpr uint32_t notKey = 0x10000; // sample_is_non_sync_sample

constexpr uint64_t mostInBox = 1U << 20U; // a second of samples takes a few kilobytes

// Sixty hours of picture and sound, which take half a gigabyte of memory.
constexpr uint64_t mostSamples = 1U << 24U;

// Reads the numbers in a box one after the other.
class Cursor
{
public:
    Cursor(FrugalFile& file, const Box& box) : m_bytes(std::min(box.Size(), mostInBox))
    {
        m_failed = !file.Read(box.begin, m_bytes.data(), m_bytes.size());
    }

    uint64_t Take(size_t bytes)
    {
        uint64_t value = 0;
        m_failed = m_failed || bytes > m_bytes.size() - m_at;
        for (size_t i = 0; i < bytes && !m_failed; ++i) {
            value = value << 8U | m_bytes[m_at++];
        }
        return value;
    }
    uint32_t Take32() { return static_cast<uint32_t>(Take(4)); }
    uint32_t TakeIf(bool present, uint32_t otherwise) { return present ? Take32() : otherwise; }
    bool Failed() const { return m_failed; }

private:
    std::vector<uint8_t> m_bytes;
    size_t m_at = 0;
    bool m_failed = false;
};

// What is known about a track's part of a fragment (traf) before its sample runs (trun).
struct TrackPart
{
    uint64_t piece = 0; // offset of the fragment
    uint64_t time = 0;  // of the next sample
    SampleDefaults defaults;
    PiecedTrack* track = nullptr;
};

bool MayFollow(const TrackPart& part)
{
    constexpr uint64_t mostTicks = 1ULL << 48U; // keeps sums and products within 64 bits
    return part.track != nullptr && part.time <= mostTicks &&
           (part.track->samples.empty() || part.track->samples.back().time <= part.time);
}

class PieceReader
{
public:
    explicit PieceReader(FrugalFile& file) : m_file(file) {}

    std::optional<PiecedMovie> Read();

private:
    bool ReadDefaults(const Box& movie);
    bool ReadPiece(const Box& piece, uint64_t place);
    bool ReadPieceOfTrack(const Box& box, uint64_t place);
    bool ReadRun(Cursor& cursor, TrackPart& part);
    PiecedTrack* TrackOf(uint32_t id);

    FrugalFile& m_file;
    PiecedMovie m_result;
    uint64_t m_samples = 0;
};

PiecedTrack* PieceReader::TrackOf(uint32_t id)
{
    const auto track = std::find_if(m_result.tracks.begin(), m_result.tracks.end(),
                                    [id](const PiecedTrack& each) { return each.id == id; });
    return track == m_result.tracks.end() ? nullptr : &*track;
}

bool PieceReader::ReadDefaults(const Box& movie)
{
    BoxWalk parts(m_file, movie);
    while (const auto part = parts.Next()) {
        if (part->type != BoxType("mvex")) {
            continue;
        }
        BoxWalk walk(m_file, *part);
        while (const auto box = walk.Next()) {
            if (box->type == BoxType("trex")) {
                Cursor cursor(m_file, *box);
                cursor.Take(4);
                PiecedTrack track;
                track.id = cursor.Take32();
                cursor.Take(4); // sample description index: a recording has one per track
                track.defaults.duration = cursor.Take32();
                track.defaults.size = cursor.Take32();
                track.defaults.flags = cursor.Take32();
                if (cursor.Failed() || TrackOf(track.id) != nullptr) {
                    return false;
                }
                m_result.tracks.push_back(track);
            }
        }
    }
    return !parts.Damaged() && !m_result.tracks.empty();
}

// Rejects more samples than the file has bytes. That limits the memory used.
bool PieceReader::ReadRun(Cursor& cursor, TrackPart& part)
{
    const uint32_t flags = cursor.Take32();
    const uint32_t count = cursor.Take32();
    const auto offset = static_cast<int32_t>(cursor.TakeIf((flags & 0x1U) != 0, 0));
    uint32_t usual = cursor.TakeIf((flags & 0x4U) != 0, part.defaults.flags); // the first's
    uint64_t place = part.piece + static_cast<uint64_t>(static_cast<int64_t>(offset));
    for (uint32_t i = 0; i < count; ++i) {
        Sample sample;
        sample.place = place;
        sample.time = part.time;
        sample.duration = cursor.TakeIf((flags & 0x100U) != 0, part.defaults.duration);
        sample.size = cursor.TakeIf((flags & 0x200U) != 0, part.defaults.size);
        sample.key = (cursor.TakeIf((flags & 0x400U) != 0, usual) & notKey) == 0;
        sample.shift = static_cast<int32_t>(cursor.TakeIf((flags & 0x800U) != 0, 0));
        if (cursor.Failed() || place > m_file.Size() || sample.size > m_file.Size() - place ||
            ++m_samples > std::min(mostSamples, m_file.Size())) {
            return false; // incomplete
        }
        part.track->samples.push_back(sample);
        usual = part.defaults.flags;
        place += sample.size;
        part.time += sample.duration;
    }
    return true;
}

bool PieceReader::ReadPieceOfTrack(const Box& box, uint64_t place)
{
    TrackPart part;
    part.piece = place;
    BoxWalk walk(m_file, box);
    while (const auto inner = walk.Next()) {
        Cursor cursor(m_file, *inner);
        if (inner->type == BoxType("tfhd")) {
            const uint32_t flags = cursor.Take32();
            part.track = TrackOf(cursor.Take32());
            if (part.track == nullptr || (flags & 0x1U) != 0) {
                return false; // the samples are elsewhere
            }
            part.defaults = part.track->defaults;
            cursor.TakeIf((flags & 0x2U) != 0, 0);
            part.defaults.duration = cursor.TakeIf((flags & 0x8U) != 0, part.defaults.duration);
            part.defaults.size = cursor.TakeIf((flags & 0x10U) != 0, part.defaults.size);
            part.defaults.flags = cursor.TakeIf((flags & 0x20U) != 0, part.defaults.flags);
        } else if (inner->type == BoxType("tfdt")) {
            part.time = cursor.Take(cursor.Take32() >> 24U == 1 ? 8 : 4);
        } else if (inner->type == BoxType("trun") && (!MayFollow(part) || !ReadRun(cursor, part))) {
            return false;
        }
        if (cursor.Failed()) {
            return false;
        }
    }
    return !walk.Damaged();
}

// Sample offsets are relative to the start of the fragment.
bool PieceReader::ReadPiece(const Box& piece, uint64_t place)
{
    BoxWalk walk(m_file, piece);
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("traf") && !ReadPieceOfTrack(*box, place)) {
            return false;
        }
    }
    return !walk.Damaged();
}

std::optional<PiecedMovie> PieceReader::Read()
{
    BoxWalk walk(m_file, 0, m_file.Size());
    uint64_t place = 0;
    bool inPieces = false;
    bool torn = false;
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("moov")) {
            constexpr uint64_t header = 8;
            if (m_result.movie.end != 0 || box->begin - place != header || !ReadDefaults(*box)) {
                return std::nullopt;
            }
            m_result.movie = *box;
            m_result.place = place;
        } else if (box->type == BoxType("moof")) {
            // Only the last fragment may be incomplete; anything after it would be lost.
            if (m_result.movie.end == 0 || torn) {
                return std::nullopt;
            }
            inPieces = true;
            torn = !ReadPiece(*box, place);
        }
        place = box->end;
    }
    return inPieces && !m_file.Failed() ? std::optional(std::move(m_result)) : std::nullopt;
}

} // namespace

std::optional<PiecedMovie> ReadPieces(FrugalFile& file)
{
    return file.IsOpen() ? PieceReader(file).Read() : std::nullopt;
}

std::optional<uint64_t> WholePart(FrugalFile& file)
{
    BoxWalk walk(file, 0, file.Size());
    uint64_t whole = 0;
    bool inPieces = false;
    bool dataMissing = false;
    while (const auto box = walk.Next()) {
        if (box->type == BoxType("moof")) {
            dataMissing = true;
        } else if (box->type == BoxType("mdat")) {
            inPieces = inPieces || dataMissing;
            dataMissing = false;
        }
        whole = dataMissing ? whole : box->end;
    }
    return inPieces && !file.Failed() && whole < file.Size() ? std::optional(whole) : std::nullopt;
}

} // namespace tool
