// Detects tones with the Goertzel algorithm.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// The amplitude of this frequency in the samples, 0 to 32767.
double Amplitude(std::span<const int16_t> samples, int rate, double hertz);

// The start times in seconds of tones of this frequency, for beeps of at least 50 ms. Accurate to 2
// ms.
std::vector<double> BeepTimes(std::span<const int16_t> samples, int rate, double hertz);

// The frequencies from 100 to 4000 Hz, in steps of 20 Hz, that are prominent for at least 0.2 s, in
// ascending order.
std::vector<int> TonesPresent(std::span<const int16_t> samples, int rate);
