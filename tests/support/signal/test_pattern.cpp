// Shows a moving picture and plays sounds that recording_report can measure in a recording. Needs
// DISPLAY, and PULSE_SERVER for the sounds. Runs until it is terminated, or for the given time.
// Prints "ready" and a newline once the picture is visible.
//
//   test_pattern [--geometry WxH+X+Y]   where; default: the whole screen
//                [--rate N]             pictures per second, default 75
//                [--hum HZ[@SINK]]      a continuous tone (can be repeated)
//                [--beep HZ[@SINK]]     a beep of 100 ms at the same moment as each flash
//                [--flash SECONDS]      interval between flashes, default 1
//                [--punctual MS]        leave out flashes that cannot be shown within this time of
//                their beep, or
//                                       whose beep may be late
//                [--seconds N]          exit after this time
//
// SINK is the sound server's name of an output; the default is the default output.
#include "tests/support/signal/beeper.h"
#include "tests/support/signal/pattern_window.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

volatile std::sig_atomic_t stopped = 0;

struct Options
{
    Geometry geometry;
    double rate = 75;
    double flash = 1;
    double seconds = 1e9;
    double punctual = 1e6; // seconds
    std::vector<Tone> hums;
    Tone beep;
};

Tone ReadTone(const std::string& text)
{
    const size_t at = text.find('@');
    return {at == std::string::npos ? std::string() : text.substr(at + 1), std::atof(text.c_str())};
}

bool Read(Options& options, const std::string& name, const char* value)
{
    Geometry& place = options.geometry;
    if (name == "--geometry") {
        return std::sscanf(value, "%dx%d+%d+%d", &place.width, &place.height, &place.x, // NOLINT
                           &place.y) == 4;
    }
    if (name == "--hum") {
        options.hums.push_back(ReadTone(value));
    } else if (name == "--beep") {
        options.beep = ReadTone(value);
    } else if (name == "--rate") {
        options.rate = std::atof(value);
    } else if (name == "--flash") {
        options.flash = std::atof(value);
    } else if (name == "--punctual") {
        options.punctual = std::atof(value) / 1000;
    } else if (name == "--seconds") {
        options.seconds = std::atof(value);
    } else {
        return false;
    }
    return options.rate > 0;
}

Clock::duration Ticks(double seconds)
{
    return std::chrono::duration_cast<Clock::duration>(Seconds(seconds));
}

void Show(PatternWindow& window, Beeper& beeper, const Options& options)
{
    constexpr std::chrono::milliseconds flashLength{100};
    const auto start = Clock::now();
    Clock::time_point due = start;
    Clock::time_point nextBeep = start + Ticks(options.flash);
    std::optional<Clock::time_point> beep; // the last one, whose flash is not shown yet
    Clock::time_point flashOff = start;
    for (uint16_t number = 0; stopped == 0 && due - start < Ticks(options.seconds); ++number) {
        if (!beep && Clock::now() >= nextBeep) {
            beeper.Beep();
            beep = Clock::now();
            nextBeep += Ticks(options.flash);
        }
        const Clock::time_point flashOn = beep ? std::max(*beep, beeper.BeepHeard()) : due;
        due += Ticks(1 / options.rate);
        // A flash is drawn at its own time, not with the next picture.
        std::this_thread::sleep_until(beep ? std::min(due, flashOn) : due);
        if (beep && Clock::now() >= flashOn) {
            beep.reset();
            if (Clock::now() <= flashOn + Ticks(options.punctual)) {
                flashOff = flashOn + flashLength;
            }
            if (nextBeep < flashOn + flashLength) { // the output has started late
                nextBeep = flashOn + Ticks(options.flash);
            }
        }
        window.Draw(number, Clock::now() < flashOff);
    }
}

} // namespace

int main(int count, char** values)
{
    Options options;
    for (int i = 1; i < count; i += 2) {
        if (i + 1 == count || !Read(options, values[i], values[i + 1])) {
            std::fprintf(stderr, "test_pattern: bad option %s\n", values[i]);
            return 2;
        }
    }
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        std::signal(signal, [](int) { stopped = 1; });
    }
    PatternWindow window(options.geometry);
    if (!window.Good()) {
        std::fprintf(stderr, "test_pattern: the X display cannot be opened\n");
        return 1;
    }
    std::vector<std::unique_ptr<Beeper>> hums;
    for (const Tone& tone : options.hums) {
        hums.push_back(std::make_unique<Beeper>(tone, false));
    }
    Beeper beeper(options.beep, true);
    window.Draw(0, false);
    std::puts("ready");
    std::fflush(stdout);
    Show(window, beeper, options);
    return 0;
}
