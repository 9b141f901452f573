#pragma once

#include "tool/system/keyboard.h"
#include "tool/system/steady_time.h"

#include <poll.h>

namespace tool {

// Looks for the end of a recording while its screen is being opened, which may take as long as a
// person needs to allow it.
class OpeningWatch
{
public:
    explicit OpeningWatch(int keyboard);

    // Waits until something happens to the descriptor, or that time. Returns false if the recording
    // is to end. Prints a line twice a second: the recorder types its "q" only after output.
    bool Wait(pollfd& descriptor, SteadyTime until);

private:
    Keyboard m_keyboard;
    SteadyTime m_nextLine;
};

} // namespace tool
