// The boxes that an MP4 file consists of.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tool {

class FrugalFile;

// The four letters of a box as a number.
constexpr uint32_t BoxType(std::string_view letters)
{
    uint32_t type = 0;
    for (const char letter : letters) {
        type = type << 8U | static_cast<uint8_t>(letter);
    }
    return type;
}

// What lies in a box: from `begin` up to `end`, places in the file.
struct Box
{
    uint32_t type = 0;
    uint64_t begin = 0;
    uint64_t end = 0;
    uint64_t Size() const { return end - begin; }
};

// Walks over the boxes that lie side by side in a stretch of a file. Boxes within boxes are not
// looked at, so no depth of nesting matters.
class BoxWalk
{
public:
    BoxWalk(FrugalFile& file, uint64_t begin, uint64_t end) : m_file(file), m_at(begin), m_end(end)
    {
    }
    BoxWalk(FrugalFile& file, const Box& within) : BoxWalk(file, within.begin, within.end) {}

    // The next box; nothing at the end or when it does not fit in there (then Damaged()).
    std::optional<Box> Next();
    bool Damaged() const { return m_damaged; }

private:
    FrugalFile& m_file;
    uint64_t m_at;
    uint64_t m_end;
    bool m_damaged = false;
};

} // namespace tool
