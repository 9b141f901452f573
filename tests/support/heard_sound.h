// Sound for a track, and what is heard of it.
#pragma once

#include "tool/sound/sound_track.h"

#include <algorithm>
#include <cstdint>
#include <vector>

using tool::SoundTrack;
using Samples = std::vector<int16_t>;

inline constexpr int rate = 1000; // one frame per millisecond
inline constexpr int64_t piece = 20;

inline Samples Constant(int64_t frames, int16_t value)
{
    Samples samples(static_cast<size_t>(frames) * 2, value);
    return samples;
}

// The left channel from this position on.
inline std::vector<int> Heard(const SoundTrack& track, int64_t from, int64_t frames)
{
    std::vector<int32_t> sum(static_cast<size_t>(frames) * 2);
    track.AddTo(from, sum);
    std::vector<int> left;
    for (size_t i = 0; i < sum.size(); i += 2) {
        left.push_back(sum[i]);
    }
    return left;
}

inline bool All(const std::vector<int>& values, int value)
{
    return std::all_of(values.begin(), values.end(), [value](int one) { return one == value; });
}
