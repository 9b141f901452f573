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

    // Starts a beep of 100 ms. Returns when it will be heard, or a time in the past if there is no
    // sound server. That is a few hundredths of a second from now, or up to two seconds if the
    // output was idle.
    SteadyTime Beep();

private:
    struct Private;
    Private* m_p;
};
