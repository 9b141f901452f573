// Reads big-endian numbers, the only ones in an MP4 file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace tool {

// The number in these bytes, eight at most.
constexpr uint64_t BigEndian(std::string_view bytes)
{
    uint64_t value = 0;
    for (const char byte : bytes) {
        value = value << 8U | static_cast<uint8_t>(byte);
    }
    return value;
}

// Takes numbers from a text one after the other. After the end there are only zeros.
class ByteReader
{
public:
    explicit ByteReader(std::string bytes) : m_bytes(std::move(bytes)) {}

    // The next `count` bytes, or an empty text if there are fewer; then Failed() is true from then
    // on.
    std::string_view TakeBytes(size_t count)
    {
        m_failed = m_failed || count > m_bytes.size() - m_at;
        const size_t begin = std::exchange(m_at, m_failed ? m_at : m_at + count);
        return m_failed ? std::string_view() : std::string_view(m_bytes).substr(begin, count);
    }
    void Skip(size_t count) { TakeBytes(count); }
    uint64_t Take(size_t count) { return BigEndian(TakeBytes(count)); }
    uint8_t Take8() { return static_cast<uint8_t>(Take(1)); }
    uint16_t Take16() { return static_cast<uint16_t>(Take(2)); }
    uint32_t Take32() { return static_cast<uint32_t>(Take(4)); }
    uint32_t Take32If(bool present, uint32_t otherwise) { return present ? Take32() : otherwise; }
    bool Failed() const { return m_failed; }

private:
    std::string m_bytes;
    size_t m_at = 0;
    bool m_failed = false;
};

} // namespace tool
