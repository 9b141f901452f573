// Reads MP4 boxes.
#pragma once

#include "tool/mp4/byte_reader.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

class FrugalFile;

// A box's four-character type as a number.
constexpr uint32_t BoxType(std::string_view letters)
{
    return static_cast<uint32_t>(BigEndian(letters));
}

// The content of a box: file offsets from `begin` up to `end`.
struct Box
{
    uint32_t type = 0;
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t Size() const { return end - begin; }
};

// Iterates over the boxes of one level in a range of a file. Does not descend, so nesting depth
// does not matter.
class BoxWalk
{
public:
    BoxWalk(FrugalFile& file, uint64_t begin, uint64_t end) : m_file(file), m_at(begin), m_end(end)
    {
    }
    BoxWalk(FrugalFile& file, const Box& within) : BoxWalk(file, within.begin, within.end) {}

    // The next box, or nothing at the end or if it exceeds the range (then Damaged() is true).
    std::optional<Box> Next();
    bool Damaged() const { return m_damaged; }

private:
    FrugalFile& m_file;
    uint64_t m_at;
    uint64_t m_end;
    bool m_damaged = false;
};

// The first child of this type, if there is one.
std::optional<Box> FindChild(FrugalFile& file, const Box& parent, uint32_t type);

// The first `most` bytes of the content. Empty if the file cannot be read.
std::string ReadContent(FrugalFile& file, const Box& box, uint64_t most);

} // namespace tool
