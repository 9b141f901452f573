#include "tool/mp4/frugal_file.h"

#include "tool/mp4/byte_reader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tool {

FrugalFile::FrugalFile(const std::string& path, uint64_t allowedBytes, uint64_t size)
    : m_file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)),
      m_allowed(allowedBytes)
{
    struct stat info = {};
    if (m_file.IsOpen() && (fstat(m_file.Number(), &info) != 0 || !S_ISREG(info.st_mode))) {
        m_file.Close();
    }
    m_size = m_file.IsOpen() ? std::min(static_cast<uint64_t>(info.st_size), size) : 0;
}

bool FrugalFile::Read(uint64_t offset, void* target, size_t count)
{
    if (!m_file.IsOpen() || count > m_allowed - m_read || offset > m_size ||
        count > m_size - offset) {
        m_failed = true;
        return false;
    }
    m_read += count;
    auto* bytes = static_cast<char*>(target);
    while (count > 0) {
        const ssize_t got = pread(m_file.Number(), bytes, count, static_cast<off_t>(offset));
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            m_failed = true;
            return false;
        }
        bytes += got;
        offset += static_cast<uint64_t>(got);
        count -= static_cast<size_t>(got);
    }
    return true;
}

uint64_t FrugalFile::Number(uint64_t offset, size_t bytes)
{
    std::array<char, 8> raw{};
    return Read(offset, raw.data(), bytes) ? BigEndian({raw.data(), bytes}) : 0;
}

} // namespace tool
