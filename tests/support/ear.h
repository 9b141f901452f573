// Listens to sources of a sound server with the reader of `tool`.
#pragma once

#include "tests/support/signal/sound_analysis.h"
#include "tool/sound/pulse/sound_reader.h"

#include <QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

// Everything a reader receives.
class Ear
{
public:
    static constexpr int rate = 48000;

    // `sources`: as for the reader.
    explicit Ear(const std::vector<std::string>& sources)
        : m_heard(sources.size()),
          m_reader(
              sources, rate,
              {[this](size_t source, tool::SteadyTime captured, std::span<const int16_t> stereo) {
                   Hear(m_heard[source], captured, stereo);
               },
               [this](size_t source) { ++m_heard[source].opened; }})
    {
    }

    bool ListenUntil(const std::function<bool()>& condition, int milliseconds = 15000)
    {
        QElapsedTimer time;
        time.start();
        while (!condition()) {
            if (time.hasExpired(milliseconds)) {
                return false;
            }
            m_reader.Wait(std::chrono::milliseconds(10));
        }
        return true;
    }
    void Forget(size_t source)
    {
        m_heard[source].samples.clear();
        m_heard[source].pieces.clear();
    }
    // Waits until this much more has been received.
    bool Listen(size_t source, double seconds)
    {
        Forget(source);
        return ListenUntil([&] { return Seconds(source) >= seconds; });
    }
    void Wait(std::chrono::milliseconds time) { m_reader.Wait(time); }

    double Seconds(size_t source) const
    {
        return static_cast<double>(m_heard[source].samples.size()) / rate;
    }
    // The loudness of a tone in what was received since Listen().
    double Level(size_t source, int hertz) const
    {
        return Amplitude(m_heard[source].samples, rate, hertz);
    }
    // The duration of the longest piece received since Listen().
    double LongestPiece(size_t source) const
    {
        const Heard& heard = m_heard[source];
        size_t longest = 0;
        for (size_t i = 0; i < heard.pieces.size(); ++i) {
            const bool last = i + 1 == heard.pieces.size();
            const size_t end = last ? heard.samples.size() : heard.pieces[i + 1].first;
            longest = std::max(longest, end - heard.pieces[i].first);
        }
        return static_cast<double>(longest) / rate;
    }
    int Opened(size_t source) const { return m_heard[source].opened; }

    // The start times of the beeps received since Listen(), according to the reader.
    std::vector<tool::SteadyTime> Beeps(size_t source, int hertz) const
    {
        const Heard& heard = m_heard[source];
        std::vector<tool::SteadyTime> times;
        for (const double seconds : BeepTimes(heard.samples, rate, hertz)) {
            const auto sample = static_cast<size_t>(seconds * rate);
            const auto after =
                std::find_if(heard.pieces.begin(), heard.pieces.end(),
                             [sample](const Piece& one) { return one.first > sample; });
            const Piece& piece = *(after - 1);
            times.push_back(piece.captured +
                            std::chrono::microseconds((sample - piece.first) * 1000000 / rate));
        }
        return times;
    }

private:
    struct Piece
    {
        size_t first; // sample
        tool::SteadyTime captured;
    };
    struct Heard
    {
        std::vector<int16_t> samples; // left channel
        std::vector<Piece> pieces;
        int opened = 0;
    };

    static void Hear(Heard& heard, tool::SteadyTime captured, std::span<const int16_t> stereo)
    {
        heard.pieces.push_back({heard.samples.size(), captured});
        for (size_t i = 0; i < stereo.size(); i += 2) {
            heard.samples.push_back(stereo[i]);
        }
    }

    std::vector<Heard> m_heard;
    tool::SoundReader m_reader;
};
