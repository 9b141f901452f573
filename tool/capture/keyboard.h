#pragma once

#include <string>

namespace tool {

// Where the end of a recording is typed: standard input.
class Keyboard
{
public:
    explicit Keyboard(int descriptor);

    // To poll for POLLIN; -1 if nothing can come any more.
    int Number() const { return m_nDescriptor; }

    // Reads what has been typed. Returns the keys before the "q".
    std::string Read();

    // Whether "q" has been read, or the recorder at the other end of a pipe is gone.
    bool HasAskedForEnd() const { return m_bEnd; }

private:
    int m_nDescriptor;
    bool m_bPipe;
    bool m_bEnd = false;
};

} // namespace tool
