// Plays tones on outputs of the sound server, at known times.
#pragma once

#include <chrono>
#include <string>

using SteadyTime = std::chrono::steady_clock::time_point;

struct Tone
{
    std::string sink; // empty: the default output
    double hertz = 0; // 0: no tone
};

// Plays a continuous tone, or short beeps on request.
class Beeper
{
public:
    // A continuous tone or, with `beeps`, silence until Beep() is called.
    Beeper(const Tone& tone, bool beeps);
    Beeper(const Beeper&) = delete;
    Beeper& operator=(const Beeper&) = delete;
    ~Beeper();

    // Starts a beep of 100 ms.
    void Beep();

    // When the last beep is heard, or a time in the past if there is no sound server. That is a few
    // hundredths of a second after its start, or up to two seconds if the output was idle. Asks the
    // server anew, whose answer counts from the next call on: what it told before the beep may be
    // wrong by a tenth of a second on a busy machine.
    SteadyTime BeepHeard();

private:
    struct Private;
    Private* m_p;
};
