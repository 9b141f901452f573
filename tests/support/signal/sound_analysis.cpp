#include "tests/support/signal/sound_analysis.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>

namespace {
constexpr double audible = 600; // of 32767
}

double Amplitude(std::span<const int16_t> samples, int rate, double hertz)
{
    if (samples.empty()) {
        return 0;
    }
    const double step = 2 * std::cos(2 * std::numbers::pi * hertz / rate);
    double last = 0;
    double beforeLast = 0;
    const auto length = static_cast<double>(samples.size());
    for (size_t i = 0; i < samples.size(); ++i) {
        // A Hann window suppresses loud neighbours.
        const double window =
            1 - std::cos(2 * std::numbers::pi * (static_cast<double>(i) + 0.5) / length);
        const double value = samples[i] * window + step * last - beforeLast;
        beforeLast = last;
        last = value;
    }
    const double power = last * last + beforeLast * beforeLast - step * last * beforeLast;
    return 2 * std::sqrt(std::max(power, 0.0)) / length;
}

std::vector<double> BeepTimes(std::span<const int16_t> samples, int rate, double hertz)
{
    const auto window = static_cast<size_t>(rate / 100);
    const auto hop = static_cast<size_t>(rate / 1000);
    std::vector<double> levels;
    for (size_t at = 0; at + window <= samples.size(); at += hop) {
        levels.push_back(Amplitude(samples.subspan(at, window), rate, hertz));
    }
    const double loudest = levels.empty() ? 0 : *std::max_element(levels.begin(), levels.end());
    std::vector<double> times;
    bool on = false;
    for (size_t i = 0; i < levels.size(); ++i) {
        const bool loud = levels[i] > std::max(loudest / 2, audible);
        if (loud && !on) {
            // The level is at half when half the window is in the beep.
            times.push_back((static_cast<double>(i * hop) + static_cast<double>(window) / 2) /
                            rate);
        }
        on = loud || (on && levels[i] > loudest / 4);
    }
    return times;
}

std::vector<int> TonesPresent(std::span<const int16_t> samples, int rate)
{
    constexpr int lowest = 100;
    constexpr int highest = 4000;
    constexpr int step = 20;
    const auto window = static_cast<size_t>(rate / 5);
    std::set<int> found;
    for (size_t at = 0; at + window <= samples.size(); at += window) {
        std::vector<double> levels;
        for (int hertz = lowest - step; hertz <= highest + step; hertz += step) {
            levels.push_back(Amplitude(samples.subspan(at, window), rate, hertz));
        }
        const double loudest = *std::max_element(levels.begin(), levels.end());
        for (size_t i = 1; i + 1 < levels.size(); ++i) {
            if (levels[i] > std::max(audible, loudest / 8) && levels[i] >= levels[i - 1] &&
                levels[i] > levels[i + 1]) {
                found.insert(lowest - step + static_cast<int>(i) * step);
            }
        }
    }
    return {found.begin(), found.end()};
}
