#pragma once

#include <unistd.h>
#include <utility>

namespace tool {

// Owns a file descriptor, or none (-1).
class Descriptor
{
public:
    Descriptor() = default;
    explicit Descriptor(int number) : m_nNumber(number) {}
    Descriptor(Descriptor&& other) noexcept : m_nNumber(std::exchange(other.m_nNumber, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_nNumber, other.m_nNumber);
        other.Close();
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Close(); }

    bool IsOpen() const { return m_nNumber >= 0; }
    int Number() const { return m_nNumber; }
    // It is no longer owned.
    int Release() { return std::exchange(m_nNumber, -1); }
    void Close()
    {
        if (IsOpen()) {
            close(Release());
        }
    }

private:
    int m_nNumber = -1;
};

} // namespace tool
