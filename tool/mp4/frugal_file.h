// A file with a limit on how much of it is read.
#pragma once

#include "tool/system/descriptor.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

namespace tool {

// Reads numbers at given offsets. Every read beyond the allowance fails, so a hostile file costs no
// more than an ordinary one.
class FrugalFile
{
public:
    // Opens regular files only; a pipe could block. Of a larger file than `size` only that many
    // bytes are there.
    FrugalFile(const std::string& path, uint64_t allowedBytes,
               uint64_t size = std::numeric_limits<uint64_t>::max());

    bool IsOpen() const { return m_file.IsOpen(); }
    uint64_t Size() const { return m_size; } // bytes
    uint64_t BytesRead() const { return m_read; }

    // Reads `count` bytes at `offset` into `target`. Returns false if there are fewer, the
    // allowance is used up, or the disk fails.
    bool Read(uint64_t offset, void* target, size_t count);

    // The big-endian number of 1 to 8 bytes at `offset`. If it cannot be read, returns 0, and
    // Failed() is true from then on.
    uint64_t Number(uint64_t offset, size_t bytes);
    bool Failed() const { return m_failed; }

private:
    Descriptor m_file;
    uint64_t m_size = 0;
    uint64_t m_allowed;
    uint64_t m_read = 0;
    bool m_failed = false;
};

} // namespace tool
