// Decodes a recording with the installed ffmpeg and ffprobe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// All that the program writes on its standard output, or nothing when it fails to run or fails.
std::optional<std::string> OutputOf(const std::vector<std::string>& command);

struct Picture
{
    double time = 0; // seconds, as it is to be shown
    int number = 0;  // as test_pattern wrote it
    bool flash = false;
};

// The pictures in order, the test pattern's strip lying at this place. Empty on failure.
std::vector<Picture> DecodePictures(const std::string& file, int x, int y);

// The first sound track as one channel of 44100 samples a second. Empty when there is none.
std::vector<int16_t> DecodeSound(const std::string& file);

constexpr int soundRate = 44100;
