// The messages of a job.
#pragma once

#include "tool/system/steady_time.h"

#include <chrono>
#include <string_view>

namespace tool {

// Writes to standard error, which the recorder reads. Never waits long for a recorder that does not
// read, and ignores one that is gone.
class Console
{
public:
    // Writes as much as there is room for within the patience; the rest is lost.
    void Say(std::string_view text,
             std::chrono::milliseconds patience = std::chrono::milliseconds(50));

    // Whether nothing was said for so long that the recorder might miss a cancel: it passes one on
    // when it reads output.
    bool IsTooQuiet(SteadyTime now) const;

    // Lets go of all standard streams, so that nobody waits for their end.
    static void Close();

private:
    SteadyTime m_last = std::chrono::steady_clock::now();
    bool m_isStuck = false; // the reader did not read for a whole patience
};

} // namespace tool
