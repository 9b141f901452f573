#pragma once

#include <string>

namespace tool {

// Where the end of a recording or job is typed: standard input.
class Keyboard
{
public:
    explicit Keyboard(int descriptor);

    // To poll for POLLIN; -1 if nothing can come any more.
    int Number() const { return m_nDescriptor; }

    // Reads what has been typed. Returns the keys before the "q".
    std::string Read();

    // Whether "q" has been read.
    bool IsQuitTyped() const { return m_bQuit; }

    // The same, or whether the recorder at the other end of a pipe is gone.
    bool HasAskedForEnd() const { return m_bQuit || m_bGone; }

private:
    int m_nDescriptor;
    bool m_bPipe;
    bool m_bQuit = false;
    bool m_bGone = false;
};

} // namespace tool
