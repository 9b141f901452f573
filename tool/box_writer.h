// Writing the boxes that an MP4 file consists of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tool {

// Appends a big-endian number of 1 to 8 bytes.
void AppendNumber(std::string& bytes, uint64_t value, size_t size);

// Puts such a number over the bytes at `place`, which are there.
void ReplaceNumber(std::string& bytes, size_t place, uint64_t value, size_t size);

// A box at the end of `bytes` for as long as this lives: what is appended meanwhile lies in it.
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
