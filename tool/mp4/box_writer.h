// Writes MP4 boxes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tool {

// Appends a big-endian number of 1 to 8 bytes.
void AppendNumber(std::string& bytes, uint64_t value, size_t size);

// Overwrites the existing bytes at `offset` with such a number.
void ReplaceNumber(std::string& bytes, size_t offset, uint64_t value, size_t size);

// Opens a box at the end of `bytes` and closes it when destroyed. Bytes appended in between are its
// content.
class OpenBox
{
public:
    OpenBox(std::string& bytes, uint32_t type);
    ~OpenBox();
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

private:
    std::string& m_bytes;
    size_t m_begin;
};

} // namespace tool
