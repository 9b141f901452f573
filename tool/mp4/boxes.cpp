#include "tool/mp4/boxes.h"

#include "tool/mp4/frugal_file.h"

#include <algorithm>

namespace tool {

std::optional<Box> BoxWalk::Next()
{
    if (m_at == m_end || m_damaged) {
        return std::nullopt;
    }
    uint64_t header = 8;
    const uint64_t left = m_end - m_at;
    const uint64_t sizeAndType = left >= header ? m_file.Number(m_at, 8) : 0;
    const auto type = static_cast<uint32_t>(sizeAndType);
    uint64_t size = sizeAndType >> 32U;
    if (size == 1 && left >= 16) {
        header = 16;
        size = m_file.Number(m_at + 8, 8);
    } else if (size == 0 && m_end == m_file.Size()) {
        size = left; // size 0: the box extends to the end of the file
    }
    if (m_file.Failed() || left < header || size < header || size > left) {
        m_damaged = true;
        return std::nullopt;
    }
    const Box box{type, m_at + header, m_at + size};
    m_at = box.end;
    return box;
}

std::optional<Box> FindChild(FrugalFile& file, const Box& parent, uint32_t type)
{
    BoxWalk walk(file, parent);
    auto child = walk.Next();
    while (child && child->type != type) {
        child = walk.Next();
    }
    return child;
}

std::string ReadContent(FrugalFile& file, const Box& box, uint64_t most)
{
    std::string content(std::min(box.Size(), most), '\0');
    return file.Read(box.begin, content.data(), content.size()) ? content : std::string();
}

} // namespace tool
