#include "tool/sound/sound_track.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace tool {
namespace {

constexpr int ringSeconds = 4; // beyond the 6 s of the pipe, for when ffmpeg does not read
constexpr double smoothing = 1.0 / 16;
// How long a late source must have had slack before its shift is reduced. A server that has just
// started to play or record is often late for some seconds and then never again.
constexpr int64_t newSeconds = 10;
constexpr int64_t secondsWhenNew = 1;
constexpr int64_t secondsLater = 5;

} // namespace

SoundTrack::SoundTrack(int rate)
    : m_nRate(rate),
      m_ring(static_cast<size_t>(rate) * ringSeconds * 2)
{
}

void SoundTrack::Put(int64_t at, std::span<const int16_t> stereo, int64_t given)
{
    const auto frames = static_cast<int64_t>(stereo.size() / 2);
    if (frames == 0) {
        return;
    }
    const int64_t length = std::max<int64_t>(frames + Correction(at, frames), 1);
    const std::vector<int16_t> piece = length == frames
                                           ? std::vector<int16_t>(stereo.begin(), stereo.end())
                                           : Stretched(stereo, length);
    const auto late = static_cast<size_t>(SkipLate(length, given));
    Write(std::span(piece).subspan(late * 2));
}

// Decides where the piece goes and returns the frames to add to its length.
int64_t SoundTrack::Correction(int64_t at, int64_t frames)
{
    const int64_t wanted = at + m_nShift;
    const auto error = static_cast<double>(wanted - m_nNext);
    m_error += (error - m_error) * smoothing;
    if (!m_bStarted || std::abs(error) > m_nRate / 4.0 || std::abs(m_error) > m_nRate / 50.0) {
        m_nNext = wanted;
        m_error = 0;
        m_bStarted = true;
        return 0;
    }
    if (std::abs(m_error) < m_nRate * 0.001) {
        return 0;
    }
    // A quarter of a percent is inaudible and more than any clock drifts.
    const int64_t step = std::max<int64_t>(frames / 400, 1);
    const int64_t correction = m_error > 0 ? step : -step;
    m_error -= static_cast<double>(correction);
    return correction;
}

// Returns the frames at the start of the piece that are too late. A single stall of the machine
// delivers many pieces late at once. Only a source that stays late is shifted, and only as long as
// necessary.
int64_t SoundTrack::SkipLate(int64_t frames, int64_t given)
{
    if (m_nOpened < 0) {
        m_nOpened = given;
    }
    const int64_t slack = m_nNext - given;
    if (m_nShift > 0) {
        m_nLeastSlack = std::min(m_nLeastSlack, slack);
        const bool isNew = given - m_nOpened < newSeconds * m_nRate;
        if (given - m_nShiftChecked > (isNew ? secondsWhenNew : secondsLater) * m_nRate) {
            // Takes effect with the next piece, whose capture time is then too far off.
            m_nShift -= std::clamp<int64_t>(m_nLeastSlack - m_nRate / 25, 0, m_nShift);
            m_nShiftChecked = given;
            m_nLeastSlack = std::numeric_limits<int64_t>::max();
        }
    }
    if (slack >= 0) {
        m_nLateSince = -1;
        return 0;
    }
    if (m_nLateSince < 0) {
        m_nLateSince = given;
    } else if (given - m_nLateSince > m_nRate) {
        const int64_t shift = m_nRate / 50 - slack;
        m_nShift += shift;
        m_nNext += shift;
        m_nShiftChecked = given;
        m_nLeastSlack = std::numeric_limits<int64_t>::max();
        m_nLateSince = -1;
        return 0;
    }
    const int64_t skipped = std::min(-slack, frames);
    m_nNext += skipped;
    return skipped;
}

size_t SoundTrack::Slot(int64_t position) const
{
    const auto capacity = static_cast<int64_t>(m_ring.size() / 2);
    return static_cast<size_t>(((position % capacity) + capacity) % capacity) * 2;
}

void SoundTrack::Write(std::span<const int16_t> stereo)
{
    const auto capacity = static_cast<int64_t>(m_ring.size() / 2);
    const auto frames = static_cast<int64_t>(stereo.size() / 2);
    if (m_nNext > m_nEnd + capacity || m_nNext < m_nBegin || m_nEnd == m_nBegin) {
        m_nBegin = m_nNext;
        m_nEnd = m_nNext;
    }
    for (int64_t position = m_nEnd; position < m_nNext; ++position) {
        m_ring[Slot(position)] = 0;
        m_ring[Slot(position) + 1] = 0;
    }
    size_t slot = Slot(m_nNext);
    for (const int16_t sample : stereo) {
        m_ring[slot] = sample;
        slot = slot + 1 < m_ring.size() ? slot + 1 : 0;
    }
    m_nNext += frames;
    m_nEnd = std::max(m_nEnd, m_nNext);
    m_nBegin = std::max(m_nBegin, m_nEnd - capacity);
}

void SoundTrack::Restart()
{
    m_bStarted = false;
    m_nOpened = -1;
    m_nLateSince = -1;
    m_nShift = 0;
    m_error = 0;
}

void SoundTrack::AddTo(int64_t from, std::span<int32_t> sum) const
{
    const int64_t begin = std::max(from, m_nBegin);
    const int64_t end = std::min(from + static_cast<int64_t>(sum.size() / 2), m_nEnd);
    if (begin >= end) {
        return;
    }
    size_t slot = Slot(begin);
    for (int32_t& value :
         sum.subspan(static_cast<size_t>(begin - from) * 2, static_cast<size_t>(end - begin) * 2)) {
        value += m_ring[slot];
        slot = slot + 1 < m_ring.size() ? slot + 1 : 0;
    }
}

std::vector<int16_t> Saturated(std::span<const int32_t> sum)
{
    std::vector<int16_t> samples(sum.size());
    std::transform(sum.begin(), sum.end(), samples.begin(), [](int32_t value) {
        return static_cast<int16_t>(std::clamp<int32_t>(value, std::numeric_limits<int16_t>::min(),
                                                        std::numeric_limits<int16_t>::max()));
    });
    return samples;
}

std::vector<int16_t> Stretched(std::span<const int16_t> stereo, int64_t frames)
{
    const auto from = static_cast<int64_t>(stereo.size() / 2);
    std::vector<int16_t> result(static_cast<size_t>(frames) * 2);
    for (int64_t i = 0; i < frames; ++i) {
        const double place = frames > 1 ? static_cast<double>(i) * static_cast<double>(from - 1) /
                                              static_cast<double>(frames - 1)
                                        : 0;
        const auto left = static_cast<int64_t>(place);
        const int64_t right = std::min(left + 1, from - 1);
        const double share = place - static_cast<double>(left);
        for (int64_t channel = 0; channel < 2; ++channel) {
            const double a = stereo[static_cast<size_t>(left * 2 + channel)];
            const double b = stereo[static_cast<size_t>(right * 2 + channel)];
            result[static_cast<size_t>(i * 2 + channel)] =
                static_cast<int16_t>(std::lround(a + (b - a) * share));
        }
    }
    return result;
}

} // namespace tool
