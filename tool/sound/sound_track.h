// One source's sound on the timeline of the recording. Positions count sample frames (one sample of
// each of the two channels) from the first video frame. The timeline is the wall clock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

namespace tool {

class SoundTrack
{
public:
    // `rate`: sample frames per second.
    explicit SoundTrack(int rate);

    // Adds interleaved stereo samples, the first of them captured at about position `at`. Pieces
    // are placed end to end and follow their capture times smoothly: a small lead or lag is
    // corrected by stretching, a large one (a gap or a restart) by a jump. Samples before `given`,
    // the first position not handed out yet, are too late. A source that is always late is shifted.
    void Put(int64_t at, std::span<const int16_t> stereo, int64_t given);

    // The next piece is not contiguous with the last: the source was gone.
    void Restart();

    // Adds the sound from position `from` on to the sum, two values per frame. Gaps add nothing.
    void AddTo(int64_t from, std::span<int32_t> sum) const;

    // Frees the memory of what lies before the position.
    void Forget(int64_t before);

private:
    int64_t Correction(int64_t at, int64_t frames);
    int64_t SkipLate(int64_t frames, int64_t given);
    void Write(std::span<const int16_t> stereo);
    int64_t End() const;

    int m_nRate;
    std::deque<int16_t> m_kept;  // a few seconds at most
    int64_t m_nBegin = 0;        // position of its first frame; End(): one past its last
    int64_t m_nNext = 0;         // position of the next piece
    int64_t m_nShift = 0;        // added to the capture times of a source that is always late
    double m_error = 0;          // smoothed distance from the capture times, in frames
    bool m_bStarted = false;     // has received a piece since the last start
    int64_t m_nOpened = -1;      // value of `given` at the last start; -1: nothing received yet
    int64_t m_nLateSince = -1;   // value of `given` when lateness began; -1: not late
    int64_t m_nShiftChecked = 0; // when the shift was last needed
    int64_t m_nLeastSlack = 0;   // smallest slack since then, in frames
};

// Converts a sum of several sources to 16 bits, clipping at the limits.
std::vector<int16_t> Saturated(std::span<const int32_t> sum);

// Resamples the piece to `frames` frames (at least 1) by linear interpolation.
std::vector<int16_t> Stretched(std::span<const int16_t> stereo, int64_t frames);

} // namespace tool
