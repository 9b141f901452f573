// Tones on outputs of the sound server, with known times at which they are heard.
#pragma once

#include <chrono>
#include <string>

using SteadyTime = std::chrono::steady_clock::time_point;

struct Tone
{
    std::string sink; // empty: the default output
    double hertz = 0; // 0: no tone
};

// Plays one tone all the time, or one in short beeps at the times asked for.
class Beeper
{
public:
    // A continuous tone, or (with `beeps`) silence until Beep is called.
    Beeper(const Tone& tone, bool beeps);
    Beeper(const Beeper&) = delete;
    Beeper& operator=(const Beeper&) = delete;
    ~Beeper();

    // Lets a beep of 100 ms begin. Returns when it will be heard, a few hundredths of a second from
    // now; the past when there is no sound server.
    SteadyTime Beep();

private:
    struct Private;
    Private* m_p;
};
