// Decodes a recording with the installed ffmpeg and ffprobe.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The program's standard output, or nothing if it cannot run or fails.
std::optional<std::string> OutputOf(const std::vector<std::string>& command);

struct Picture
{
    double time = 0; // presentation time in seconds
    int number = 0;  // the number drawn by test_pattern
    bool flash = false;
};

// The frames in order, with the test pattern's strip at this place. Empty on failure.
std::vector<Picture> DecodePictures(const std::string& file, int x, int y);

// The first sound track as mono at 44100 Hz. Empty if there is none.
std::vector<int16_t> DecodeSound(const std::string& file);

constexpr int soundRate = 44100;
