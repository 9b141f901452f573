// What the stand-in for a Mac's ffmpeg has put into a recording.
#pragma once

#include "tests/support/run_program.h"
#include "tests/support/signal/sound_analysis.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

constexpr int kAvSoundRate = 44100;
constexpr double kAvPictureRate = 29.97;

// The tone of the sound device with this number in ffmpeg's list.
constexpr double AvTone(int device)
{
    return 440.0 * (device + 1);
}

// The brightness of each frame, 0 to 255.
inline QByteArray AvBrightness(const QString& path)
{
    return RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v:0", "-vf",
                                 "scale=1:1:flags=area,format=gray", "-vsync", "passthrough", "-f",
                                 "rawvideo", "-"})
        .output;
}

// The times at which the screen turns white, in seconds.
inline QList<double> AvFlashes(const QString& path)
{
    constexpr int white = 200;
    const QByteArray frames = AvBrightness(path);
    QList<double> times;
    for (qsizetype i = 1; i < frames.size(); ++i) {
        if (static_cast<uchar>(frames[i]) > white && static_cast<uchar>(frames[i - 1]) <= white) {
            times << static_cast<double>(i) / kAvPictureRate;
        }
    }
    return times;
}

// The sound of all tracks' first one, mono.
inline std::vector<int16_t> AvSamples(const QString& path)
{
    const QByteArray bytes =
        RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:a:0", "-ac", "1",
                              "-ar", QString::number(kAvSoundRate), "-f", "s16le", "-"})
            .output;
    std::vector<int16_t> samples(static_cast<size_t>(bytes.size()) / sizeof(int16_t));
    std::memcpy(samples.data(), bytes.constData(), samples.size() * sizeof(int16_t));
    return samples;
}

// The largest distance in seconds from a flash to the tone of this device that is nearest to it. In
// the first second devices may still be starting, and the sound may end a little before the
// pictures.
inline double AvWorstOffset(const QString& path, int device)
{
    constexpr double begin = 1;
    constexpr double rest = 0.5;
    const std::vector<int16_t> samples = AvSamples(path);
    const double end = static_cast<double>(samples.size()) / kAvSoundRate - rest;
    const std::vector<double> beeps = BeepTimes(samples, kAvSoundRate, AvTone(device));
    double worst = beeps.empty() ? 1000 : 0;
    for (const double flash : AvFlashes(path)) {
        double nearest = 1000;
        for (const double beep : beeps) {
            nearest = std::min(nearest, std::abs(beep - flash));
        }
        worst = flash < begin || flash > end ? worst : std::max(worst, nearest);
    }
    return worst;
}
