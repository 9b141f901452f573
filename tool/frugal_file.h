// A file of which only a little is ever read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tool {

// Reads numbers at given places. Once the allowance is used up every further reading fails, so a
// hostile file costs no more than an honest one.
class FrugalFile
{
public:
    // Nothing but an ordinary file is opened: a pipe would keep its reader waiting.
    FrugalFile(const std::string& path, uint64_t allowedBytes);
    ~FrugalFile();
    FrugalFile(const FrugalFile&) = delete;
    FrugalFile& operator=(const FrugalFile&) = delete;

    bool IsOpen() const { return m_file >= 0; }
    uint64_t Size() const { return m_size; } // bytes
    uint64_t BytesRead() const { return m_read; }

    // Fills `target` with the `count` bytes at `place`; false when there are not so many, when the
    // allowance is used up, or when the disk fails.
    bool Read(uint64_t place, void* target, size_t count);

    // The big-endian number of 1 to 8 bytes at `place`; 0 when it cannot be read, and Failed() from
    // then on.
    uint64_t Number(uint64_t place, size_t bytes);
    bool Failed() const { return m_failed; }

private:
    int m_file = -1;
    uint64_t m_size = 0;
    uint64_t m_allowed;
    uint64_t m_read = 0;
    bool m_failed = false;
};

} // namespace tool
