#include "tool/sound/sound_track.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

namespace tool {
namespace {

constexpr int keptSeconds = 4; // beyond the 6 s of the pipe, for when ffmpeg does not read
constexpr double smoothing = 1.0 / 16;
// How long a late source must have had slack before its shift is reduced. A server that has just
// started to play or record is often late for some seconds and then never again.
constexpr int64_t newSeconds = 10;
constexpr int64_t secondsWhenNew = 1;
constexpr int64_t secondsLater = 5;

} // namespace

SoundTrack::SoundTrack(int rate) : m_nRate(rate) {}

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

int64_t SoundTrack::End() const
{
    return m_nBegin + static_cast<int64_t>(m_kept.size() / 2);
}

void SoundTrack::Forget(int64_t before)
{
    const int64_t frames = std::clamp<int64_t>(before - m_nBegin, 0, End() - m_nBegin);
    m_kept.erase(m_kept.begin(), m_kept.begin() + frames * 2);
    m_nBegin += frames;
}

void SoundTrack::Write(std::span<const int16_t> stereo)
{
    if (stereo.empty()) {
        return;
    }
    const int64_t most = int64_t{m_nRate} * keptSeconds;
    if (m_nNext > End() + most || m_nNext < m_nBegin || m_kept.empty()) {
        m_kept.clear();
        m_nBegin = m_nNext;
    }
    const auto at = static_cast<size_t>(m_nNext - m_nBegin) * 2;
    m_kept.resize(std::max(m_kept.size(), at + stereo.size())); // a gap is silent
    std::copy(stereo.begin(), stereo.end(), m_kept.begin() + static_cast<ptrdiff_t>(at));
    m_nNext += static_cast<int64_t>(stereo.size() / 2);
    Forget(End() - most);
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
    const int64_t end = std::min(from + static_cast<int64_t>(sum.size() / 2), End());
    if (begin < end) {
        const auto sums = sum.begin() + (begin - from) * 2;
        std::transform(sums, sums + (end - begin) * 2, m_kept.begin() + (begin - m_nBegin) * 2,
                       sums, std::plus<int32_t>());
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
