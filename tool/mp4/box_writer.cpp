#include "tool/mp4/box_writer.h"

namespace tool {

void AppendNumber(std::string& bytes, uint64_t value, size_t size)
{
    for (size_t i = size; i-- > 0;) {
        bytes.push_back(static_cast<char>(value >> 8U * i & 0xffU));
    }
}

void ReplaceNumber(std::string& bytes, size_t offset, uint64_t value, size_t size)
{
    for (size_t i = 0; i < size; ++i) {
        bytes[offset + i] = static_cast<char>(value >> 8U * (size - 1 - i) & 0xffU);
    }
}

OpenBox::OpenBox(std::string& bytes, uint32_t type) : m_bytes(bytes), m_begin(bytes.size())
{
    AppendNumber(bytes, 0, 4); // the size, set when the box is closed
    AppendNumber(bytes, type, 4);
}

OpenBox::~OpenBox()
{
    ReplaceNumber(m_bytes, m_begin, m_bytes.size() - m_begin, 4);
}

} // namespace tool
