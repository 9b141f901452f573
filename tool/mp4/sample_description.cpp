#include "tool/mp4/sample_description.h"

#include "tool/mp4/frugal_file.h"
#include "tool/system/one_of.h"

#include <array>

namespace tool {
namespace {

constexpr uint64_t largestConfiguration = 4096; // bytes

constexpr std::array<uint32_t, 2> h264 = {BoxType("avc1"), BoxType("avc3")};
constexpr std::array<uint32_t, 2> h265 = {BoxType("hvc1"), BoxType("hev1")};

// The length of a descriptor with this tag, or nothing if it is another one. Each byte has seven
// bits of it, and one that says that more follow.
std::optional<uint32_t> TakeDescriptor(ByteReader& reader, uint8_t tag)
{
    if (reader.Take8() != tag) {
        return std::nullopt;
    }
    constexpr int mostBytes = 4;
    uint32_t length = 0;
    for (int i = 0; i < mostBytes; ++i) {
        const uint8_t byte = reader.Take8();
        length = length << 7U | (byte & 0x7fU);
        if ((byte & 0x80U) == 0) {
            return length;
        }
    }
    return std::nullopt;
}

// "mp4a" stands for several codecs. The decoder's description says which, and how it is set up.
bool ReadAac(ByteReader reader, std::string& configuration)
{
    constexpr uint8_t elementaryStream = 3;
    constexpr uint8_t decoder = 4;
    constexpr uint8_t decoderSpecific = 5;
    constexpr uint8_t aac = 0x40;
    reader.Skip(4); // version and flags
    if (!TakeDescriptor(reader, elementaryStream)) {
        return false;
    }
    reader.Skip(3); // its number, and flags
    if (!TakeDescriptor(reader, decoder) || reader.Take8() != aac) {
        return false;
    }
    reader.Skip(12); // buffer size and bit rates
    configuration = reader.TakeBytes(TakeDescriptor(reader, decoderSpecific).value_or(0));
    return true;
}

bool IsConfiguration(uint32_t box, uint32_t entry)
{
    return (box == BoxType("avcC") && IsOneOf(h264, entry)) ||
           (box == BoxType("hvcC") && IsOneOf(h265, entry)) ||
           (box == BoxType("esds") && entry == BoxType("mp4a"));
}

// Returns false if there are two.
bool ReadConfigurations(FrugalFile& file, BoxWalk& walk, uint32_t entry, SampleDescription& found)
{
    bool any = false;
    while (const auto box = walk.Next()) {
        if (!IsConfiguration(box->type, entry)) {
            continue;
        }
        if (any) {
            return false;
        }
        any = true;
        if (box->Size() > largestConfiguration) {
            continue;
        }
        const std::string content = ReadContent(file, *box, largestConfiguration);
        if (box->type != BoxType("esds")) {
            found.configuration = content;
        } else if (ReadAac(ByteReader(content), found.configuration)) {
            found.codec = "aac ";
        }
    }
    return !walk.Damaged();
}

} // namespace

SampleDescription ReadSampleDescription(FrugalFile& file, const Box& box, TrackKind kind)
{
    BoxWalk entries(file, box.begin + 8, box.end);
    const bool one = file.Number(box.begin, 4) == 0 && file.Number(box.begin + 4, 4) == 1;
    const auto entry = one ? entries.Next() : std::nullopt;
    const uint64_t fields = kind == TrackKind::Audio ? 28 : 78;
    if (!entry || entry->end != box.end || entry->Size() < fields) {
        return {};
    }
    SampleDescription found;
    for (int shift = 24; shift >= 0; shift -= 8) {
        found.codec += static_cast<char>(entry->type >> static_cast<unsigned>(shift) & 0xffU);
    }
    BoxWalk walk(file, entry->begin + fields, entry->end);
    const bool good = ReadConfigurations(file, walk, entry->type, found);
    return good ? found : SampleDescription();
}

} // namespace tool
