#pragma once

#include "tests/support/ordinary_movie.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

inline constexpr int kRate = 30;       // the pattern's frame rate
inline constexpr double kMostLost = 2; // seconds

// A moment in a recording.
struct Moment
{
    int shown = -1;   // the number on the screen
    double taken = 0; // seconds that ffmpeg has read
};

// The numbers in the frames, in order.
inline QList<int> NumbersIn(const QString& path)
{
    const Outcome decoded =
        RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v", "-vf",
                              "crop=256:32:0:0,scale=16:1:flags=area,format=gray", "-vsync",
                              "passthrough", "-f", "rawvideo", "-"});
    QList<int> numbers;
    for (qsizetype at = 0; at + 16 <= decoded.output.size(); at += 16) {
        int number = 0;
        for (int bit = 0; bit < 16; ++bit) {
            number |= static_cast<uchar>(decoded.output[at + bit]) > 127 ? 1 << bit : 0;
        }
        numbers << number;
    }
    return numbers;
}

// The seconds of sound that play.
inline double SoundIn(const QString& path)
{
    const Outcome decoded =
        RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:a", "-ac", "1",
                              "-ar", "8000", "-f", "u8", "-"});
    return static_cast<double>(decoded.output.size()) / 8000;
}

// A test of recordings that end early. The screen shows a counter: its value at that moment is
// compared with the last frame that plays.
class CutShortTest : public QObject
{
protected:
    // Shows the counter.
    void Prepare()
    {
        QVERIFY(m_folder.isValid());
        QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
        m_time.start();
        RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
    }
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    int ShownNow() const { return static_cast<int>(m_time.elapsed() * kRate / 1000); }
    Moment Now(const Take& take) const { return {ShownNow(), take.Taken()}; }
    // Checks that the recording plays up to `mostLost` seconds before the moment. On a machine too
    // busy to record in time, what has not reached ffmpeg does not count as lost.
    void ExpectUpTo(const QString& path, Moment moment, bool sound, double mostLost = kMostLost)
    {
        const QList<int> numbers = NumbersIn(path);
        const QByteArray name = QFileInfo(path).fileName().toUtf8();
        QVERIFY2(!numbers.isEmpty(), name + ": no picture plays");
        QVERIFY2(std::is_sorted(numbers.begin(), numbers.end()), name + ": pictures in disorder");
        constexpr double usualDelay = 0.5;
        const double recorded = std::min(
            static_cast<double>(moment.shown - numbers.first()) / kRate, moment.taken + usualDelay);
        const double lost =
            recorded - static_cast<double>(numbers.last() - numbers.first()) / kRate;
        m_worst = std::max(m_worst, lost);
        QVERIFY2(lost <= mostLost, name + ": " + QByteArray::number(lost) + " s lost of " +
                                       QByteArray::number(recorded));
        const double silent = sound ? recorded - SoundIn(path) : 0;
        QVERIFY2(silent <= mostLost, name + ": sound of " + QByteArray::number(silent) + " s lost");
    }
    // Waits for the first frame, and then this long.
    void RecordFor(Take& take, int milliseconds)
    {
        QTRY_VERIFY2_WITH_TIMEOUT(take.HasPicture(), take.Text(), 20000);
        const QDeadlineTimer end(milliseconds);
        QTRY_VERIFY2_WITH_TIMEOUT(end.hasExpired(), "time stands still", milliseconds + 10000);
    }

    QTemporaryDir m_folder;
    TestPatternProcess m_pattern{QStringList{"--rate", QString::number(kRate)}};
    QElapsedTimer m_time; // since the pattern's first frame
    double m_worst = 0;   // seconds lost
};
