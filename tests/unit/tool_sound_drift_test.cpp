// Sources whose clocks are slow or fast.
#include "tests/support/heard_sound.h"

#include <QTest>

#include <cmath>

namespace {

// Plays a source whose clock is slow by `drift` (0.001: one frame in a thousand is missing). Each
// frame's value is the millisecond it was captured in, modulo 1000. Returns how far, in ms, the
// sound at the end is from where it should be.
int OffsetAfter(double seconds, double drift)
{
    SoundTrack track(rate);
    const auto pieces = static_cast<int64_t>(seconds * rate * (1 - drift) / piece);
    int64_t at = 0;
    for (int64_t i = 0; i < pieces; ++i) {
        Samples samples;
        for (int64_t k = 0; k < piece; ++k) {
            const auto when =
                static_cast<int64_t>(static_cast<double>(i * piece + k) / (1 - drift));
            samples.insert(samples.end(), 2, static_cast<int16_t>(when % 1000));
        }
        at = static_cast<int64_t>(static_cast<double>(i * piece) / (1 - drift));
        track.Put(at, samples, at - 100);
    }
    return std::abs(Heard(track, at, 1).front() - static_cast<int>(at % 1000));
}

} // namespace

class ToolSoundDriftTest : public QObject
{
    Q_OBJECT

private slots:
    void smallErrorsInTimeLeaveNoHole();
    void slowAndFastClocksStayInStep_data();
    void slowAndFastClocksStayInStep();
    void usualDriftIsStretchedAwayWithoutAJump_data();
    void usualDriftIsStretchedAwayWithoutAJump();
    void stretchingKeepsBothEnds();
};

void ToolSoundDriftTest::smallErrorsInTimeLeaveNoHole()
{
    SoundTrack track(44100);
    constexpr int64_t frames = 441;
    int64_t at = 0;
    for (int i = 0; i < 300; ++i, at += frames) {
        track.Put(at + (i % 2 == 0 ? 60 : -60), Constant(frames, 9), at - 4410);
    }
    const auto heard = Heard(track, at - 100 * frames, 99 * frames);
    QVERIFY2(All(heard, 9), "1.4 ms of uncertainty must not cut the sound");
}

void ToolSoundDriftTest::slowAndFastClocksStayInStep_data()
{
    QTest::addColumn<double>("drift");
    QTest::newRow("exact") << 0.0;
    QTest::newRow("200 ppm slow") << 0.0002;
    QTest::newRow("200 ppm fast") << -0.0002;
    QTest::newRow("1 percent slow") << 0.01;
    QTest::newRow("1 percent fast") << -0.01;
}

void ToolSoundDriftTest::slowAndFastClocksStayInStep()
{
    QFETCH(double, drift);
    const int offset = OffsetAfter(600.3, drift);
    QVERIFY2(offset <= 22, qPrintable(QStringLiteral("%1 ms off after 10 minutes").arg(offset)));
}

void ToolSoundDriftTest::usualDriftIsStretchedAwayWithoutAJump_data()
{
    QTest::addColumn<double>("drift");
    QTest::newRow("200 ppm slow") << 0.0002;
    QTest::newRow("200 ppm fast") << -0.0002;
    QTest::newRow("0.1 percent slow") << 0.001;
    QTest::newRow("0.1 percent fast") << -0.001;
}

// A source whose samples rise by one a frame: every jump would show as one.
void ToolSoundDriftTest::usualDriftIsStretchedAwayWithoutAJump()
{
    QFETCH(double, drift);
    constexpr int64_t fineRate = 8000;
    constexpr int64_t frames = 160; // 20 ms
    SoundTrack track(fineRate);
    int last = -1;
    int64_t looked = 0;
    for (int64_t i = 0; i < 60 * fineRate / frames; ++i) {
        Samples samples;
        for (int64_t k = 0; k < frames; ++k) {
            samples.insert(samples.end(), 2, static_cast<int16_t>((i * frames + k) % 30000));
        }
        const auto at = static_cast<int64_t>(static_cast<double>(i * frames) * (1 + drift));
        track.Put(at, samples, at - fineRate / 10);
        const std::vector<int> heard = Heard(track, looked, at - looked);
        const int before = last;
        for (const int value : heard) {
            const int step = (value - last + 30000) % 30000;
            QVERIFY2(last < 0 || step <= 2,
                     qPrintable(QString("a jump by %1 frames after %2 s")
                                    .arg(step)
                                    .arg(static_cast<double>(looked) / fineRate)));
            last = value;
        }
        const auto played = static_cast<int64_t>(heard.size());
        const int64_t passed = (last - before + 30000) % 30000;
        QVERIFY2(before < 0 || std::abs(passed - played) <= 3,
                 qPrintable(QString("%1 frames play as %2").arg(passed).arg(played)));
        looked = at;
        // Where the frame captured last should be, and is.
        const double off =
            static_cast<double>(last) - std::fmod(static_cast<double>(at - 1) / (1 + drift), 30000);
        const double ms = std::remainder(off, 30000) * 1000 / fineRate;
        QVERIFY2(i == 0 || std::abs(ms) <= 3, qPrintable(QString("%1 ms off").arg(ms)));
    }
}

void ToolSoundDriftTest::stretchingKeepsBothEnds()
{
    const Samples ramp = {0, 100, 10, 110, 20, 120, 30, 130};
    const Samples longer = tool::Stretched(ramp, 7);
    QCOMPARE(longer.size(), size_t{14});
    QCOMPARE(longer.front(), 0);
    QCOMPARE(longer.back(), 130);
    QCOMPARE(longer[2], 5);
    QCOMPARE(tool::Stretched(ramp, 1).size(), size_t{2});
}

QTEST_APPLESS_MAIN(ToolSoundDriftTest)
#include "tool_sound_drift_test.moc"
