// One source's sound on the recording's timeline. Positions count sample frames (one sample of each
// of the two channels) from the first picture on; the timeline is the wall clock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tool {

class SoundTrack
{
public:
    // `rate`: sample frames a second.
    explicit SoundTrack(int rate);

    // Takes interleaved stereo samples, the first of them captured at position `at` as well as is
    // known. Pieces are laid end to end and follow the stated times gently: a small lead or lag is
    // stretched away, a large one (a gap, a new start) is jumped over. What lies before `given`,
    // the first position not handed out yet, comes too late; a source that is always late is
    // shifted.
    void Put(int64_t at, std::span<const int16_t> stereo, int64_t given);

    // The next piece is not joined to the last: the source went away.
    void Restart();

    // Adds the sound from position `from` on to the sum, two numbers a frame; gaps add nothing.
    void AddTo(int64_t from, std::span<int32_t> sum) const;

private:
    int64_t Correction(int64_t at, int64_t frames);
    int64_t SkipLate(int64_t frames, int64_t given);
    void Write(std::span<const int16_t> stereo);
    size_t Slot(int64_t position) const;

    int m_nRate;
    std::vector<int16_t> m_ring; // the last seconds; position p lies at p modulo its length
    int64_t m_nBegin = 0;        // first position that the ring holds
    int64_t m_nEnd = 0;          // one past the last
    int64_t m_nNext = 0;         // where the next piece goes
    int64_t m_nShift = 0;        // added to stated times of a source that is always late
    double m_error = 0;          // smoothed distance from the stated times, in frames
    int m_nPieces = 0;           // since the last start
    int64_t m_nOpened = -1;      // first position not given at the last start; -1: nothing came yet
    int64_t m_nLateSince = -1;   // first position not given when lateness began; -1: not late
    int64_t m_nShiftChecked = 0; // when the shift was last found to be needed
    int64_t m_nLeastSlack = 0;   // frames to spare since then
};

// The sum of several sources as 16-bit samples; what is too loud is cut off at the limits.
std::vector<int16_t> Saturated(std::span<const int32_t> sum);

// The piece at another length, straight lines between its samples; frames >= 1.
std::vector<int16_t> Stretched(std::span<const int16_t> stereo, int64_t frames);

// Frames that are due after this time, when sound is handed out `delayMs` late; at least 0.
int64_t FramesDue(int64_t elapsedUs, int rate, int delayMs);

} // namespace tool
