#include "tool/mp4/boxes.h"

#include "tool/mp4/frugal_file.h"

namespace tool {

std::optional<Box> BoxWalk::Next()
{
    if (m_at == m_end || m_damaged) {
        return std::nullopt;
    }
    uint64_t header = 8;
    const uint64_t left = m_end - m_at;
    const uint64_t both = left >= header ? m_file.Number(m_at, 8) : 0;
    const auto type = static_cast<uint32_t>(both);
    uint64_t size = both >> 32U;
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

} // namespace tool
