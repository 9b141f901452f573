#include "tool/mp4/sample_table_check.h"

#include "tool/mp4/frugal_file.h"

namespace tool {
namespace {

constexpr uint64_t behindCount = 8; // version, flags and count

// Whether the table has entries of `width` bytes each from `offset` on, and nothing else.
bool IsWhole(FrugalFile& file, const Box& table, uint64_t width, uint64_t offset = behindCount)
{
    if (table.Size() < offset + width || file.Number(table.begin, 4) != 0) {
        return false;
    }
    const uint64_t count = file.Number(table.begin + offset - 4, 4);
    return count > 0 && table.Size() == offset + count * width;
}

bool IsMissingOrWhole(FrugalFile& file, const Box& table, uint64_t width)
{
    return table.end == 0 || IsWhole(file, table, width);
}

// One size for all samples, or one for each.
bool AreSizesWhole(FrugalFile& file, const Box& sizes)
{
    if (sizes.Size() < 12 || file.Number(sizes.begin, 4) != 0) {
        return false;
    }
    const uint64_t common = file.Number(sizes.begin + 4, 4);
    return common > 0 ? sizes.Size() == 12 && file.Number(sizes.begin + 8, 4) > 0
                      : IsWhole(file, sizes, 4, 12);
}

} // namespace

bool BeginWithSyncSample(FrugalFile& file, const SampleTableBoxes& tables)
{
    const bool wide = tables.longChunkOffsets.end != 0;
    const Box& offsets = wide ? tables.longChunkOffsets : tables.chunkOffsets;
    const size_t width = wide ? 8 : 4;
    if ((wide && tables.chunkOffsets.end != 0) || !IsWhole(file, tables.durations, 8) ||
        !IsWhole(file, offsets, width) || !IsWhole(file, tables.chunks, 12) ||
        !IsMissingOrWhole(file, tables.compositionOffsets, 8) ||
        !IsMissingOrWhole(file, tables.syncSamples, 4) || !AreSizesWhole(file, tables.sizes)) {
        return false;
    }
    const uint64_t firstChunk = tables.chunks.begin + behindCount;
    const Box& syncSamples = tables.syncSamples;
    return file.Number(tables.durations.begin + behindCount + 4, 4) > 0 &&
           file.Number(offsets.begin + behindCount, width) < file.Size() &&
           file.Number(firstChunk, 4) == 1 && file.Number(firstChunk + 4, 4) > 0 &&
           file.Number(firstChunk + 8, 4) == 1 &&
           (syncSamples.end == 0 || file.Number(syncSamples.begin + behindCount, 4) == 1);
}

} // namespace tool
