// Tones in sound, by Goertzel's method.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

// The amplitude of this frequency in the samples, 0 to 32767.
double Amplitude(std::span<const int16_t> samples, int rate, double hertz);

// The times in seconds at which a tone of this frequency begins; beeps are taken to be at least
// 50 ms long. Good to 2 ms.
std::vector<double> BeepTimes(std::span<const int16_t> samples, int rate, double hertz);

// The frequencies from 100 to 4000 Hz, in steps of 20 Hz, that stand out somewhere for 0.2 s or
// longer, in rising order.
std::vector<int> TonesPresent(std::span<const int16_t> samples, int rate);
