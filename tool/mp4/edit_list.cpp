#include "tool/mp4/edit_list.h"

#include "tool/mp4/box_writer.h"

#include <algorithm>

namespace tool {
namespace {

constexpr uint32_t normalRate = 0x10000;

struct Edit
{
    uint64_t duration = 0;
    uint64_t mediaTime = 0;
    bool isEmpty = false;
    uint32_t rate = 0;
};

Edit TakeEdit(ByteReader& reader, size_t width)
{
    Edit edit;
    edit.duration = reader.Take(width);
    edit.mediaTime = reader.Take(width);
    edit.isEmpty = edit.mediaTime == (width == 8 ? UINT64_MAX : UINT32_MAX);
    edit.rate = reader.Take32();
    return edit;
}

} // namespace

std::optional<EditList> ReadEditList(FrugalFile& file, const Box& box)
{
    constexpr uint64_t mostBytes = 8 + 2 * 20; // two edits of version 1
    ByteReader reader(ReadContent(file, box, mostBytes));
    const uint32_t version = reader.Take32() >> 24U;
    const size_t width = version == 1 ? 8 : 4;
    const uint32_t count = reader.Take32();
    if (version > 1 || count == 0 || count > 2) {
        return std::nullopt;
    }
    EditList list;
    Edit edit = TakeEdit(reader, width);
    if (count == 2) {
        if (!edit.isEmpty) {
            return std::nullopt;
        }
        list.emptyDuration = edit.duration;
        edit = TakeEdit(reader, width);
    }
    list.segmentDuration = edit.duration;
    list.mediaTime = edit.mediaTime;
    const uint64_t mostTicks = width == 8 ? INT64_MAX : INT32_MAX; // the time is signed
    const bool usual = !reader.Failed() && edit.mediaTime <= mostTicks && edit.rate == normalRate;
    return usual ? std::optional(list) : std::nullopt;
}

void AppendEditList(std::string& bytes, const EditList& list)
{
    const bool wide =
        std::max({list.emptyDuration, list.segmentDuration, list.mediaTime}) > INT32_MAX;
    const size_t width = wide ? 8 : 4;
    const OpenBox edits(bytes, BoxType("edts"));
    const OpenBox box(bytes, BoxType("elst"));
    AppendNumber(bytes, wide ? 1 : 0, 1);
    AppendNumber(bytes, 0, 3); // flags
    AppendNumber(bytes, list.emptyDuration > 0 ? 2 : 1, 4);
    if (list.emptyDuration > 0) {
        AppendNumber(bytes, list.emptyDuration, width);
        AppendNumber(bytes, UINT64_MAX, width);
        AppendNumber(bytes, normalRate, 4);
    }
    AppendNumber(bytes, list.segmentDuration, width);
    AppendNumber(bytes, list.mediaTime, width);
    AppendNumber(bytes, normalRate, 4);
}

} // namespace tool
