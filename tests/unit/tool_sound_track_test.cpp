#include "tool/sound/sound_track.h"

#include <QTest>

#include <algorithm>
#include <cmath>

using tool::SoundTrack;
using Samples = std::vector<int16_t>;

namespace {

constexpr int rate = 1000; // one frame per millisecond
constexpr int64_t piece = 20;

Samples Constant(int64_t frames, int16_t value)
{
    Samples samples(static_cast<size_t>(frames) * 2, value);
    return samples;
}

// The left channel from this position on.
std::vector<int> Heard(const SoundTrack& track, int64_t from, int64_t frames)
{
    std::vector<int32_t> sum(static_cast<size_t>(frames) * 2);
    track.AddTo(from, sum);
    std::vector<int> left;
    for (size_t i = 0; i < sum.size(); i += 2) {
        left.push_back(sum[i]);
    }
    return left;
}

bool All(const std::vector<int>& values, int value)
{
    return std::all_of(values.begin(), values.end(), [value](int one) { return one == value; });
}

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

class ToolSoundTrackTest : public QObject
{
    Q_OBJECT

private slots:
    void soundLiesWhereItWasCaptured();
    void gapsAreSilent();
    void gapsAreSilentAlsoWhereOlderSoundLay();
    void smallErrorsInTimeLeaveNoHole();
    void slowAndFastClocksStayInStep_data();
    void slowAndFastClocksStayInStep();
    void usualDriftIsStretchedAwayWithoutAJump_data();
    void usualDriftIsStretchedAwayWithoutAJump();
    void whatComesTooLateIsLeftOut();
    void oneStallDoesNotShiftTheSound();
    void sourceThatIsAlwaysLateIsHeardAllTheSame();
    void sourceThatIsLateOnlyAtItsStartIsSoonInPlace();
    void aReturningSourceStartsAfresh();
    void aReturningSourceIsNotShiftedAsBefore();
    void aLongBacklogIsSilence();
    void mixIsTheSumAndNeverWraps();
    void stretchingKeepsBothEnds();
};

void ToolSoundTrackTest::soundLiesWhereItWasCaptured()
{
    SoundTrack track(rate);
    track.Put(50, Constant(piece, 7), 0);
    QVERIFY(All(Heard(track, 0, 50), 0));
    QVERIFY(All(Heard(track, 50, piece), 7));
    QVERIFY(All(Heard(track, 50 + piece, 50), 0));
}

void ToolSoundTrackTest::gapsAreSilent()
{
    SoundTrack track(rate);
    track.Put(0, Constant(piece, 7), 0);
    track.Put(3000, Constant(piece, 8), 2000);
    QVERIFY(All(Heard(track, 0, piece), 7));
    QVERIFY(All(Heard(track, piece, 3000 - piece), 0));
    QVERIFY(All(Heard(track, 3000, piece), 8));
}

// The track reuses its memory every few seconds.
void ToolSoundTrackTest::gapsAreSilentAlsoWhereOlderSoundLay()
{
    SoundTrack track(rate);
    int64_t at = 0;
    for (; at < 12000; at += piece) {
        track.Put(at, Constant(piece, 7), at - 100);
    }
    constexpr int64_t gap = 3000;
    track.Put(at + gap, Constant(piece, 8), at + gap - 100);
    std::vector<int32_t> sum(static_cast<size_t>(gap) * 2);
    track.AddTo(at, sum);
    QVERIFY2(sum == std::vector<int32_t>(sum.size()), "old sound is heard once more");
}

void ToolSoundTrackTest::smallErrorsInTimeLeaveNoHole()
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

void ToolSoundTrackTest::slowAndFastClocksStayInStep_data()
{
    QTest::addColumn<double>("drift");
    QTest::newRow("exact") << 0.0;
    QTest::newRow("200 ppm slow") << 0.0002;
    QTest::newRow("200 ppm fast") << -0.0002;
    QTest::newRow("1 percent slow") << 0.01;
    QTest::newRow("1 percent fast") << -0.01;
}

void ToolSoundTrackTest::slowAndFastClocksStayInStep()
{
    QFETCH(double, drift);
    const int offset = OffsetAfter(600.3, drift);
    QVERIFY2(offset <= 22, qPrintable(QStringLiteral("%1 ms off after 10 minutes").arg(offset)));
}

void ToolSoundTrackTest::usualDriftIsStretchedAwayWithoutAJump_data()
{
    QTest::addColumn<double>("drift");
    QTest::newRow("200 ppm slow") << 0.0002;
    QTest::newRow("200 ppm fast") << -0.0002;
    QTest::newRow("0.1 percent slow") << 0.001;
    QTest::newRow("0.1 percent fast") << -0.001;
}

// A source whose samples rise by one a frame: every jump would show as one.
void ToolSoundTrackTest::usualDriftIsStretchedAwayWithoutAJump()
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

void ToolSoundTrackTest::whatComesTooLateIsLeftOut()
{
    SoundTrack track(rate);
    track.Put(90, Constant(piece, 7), 100);
    QVERIFY(All(Heard(track, 90, 10), 0));
    QVERIFY(All(Heard(track, 100, 10), 7));
    QVERIFY(All(Heard(track, 110, 10), 0));
}

void ToolSoundTrackTest::oneStallDoesNotShiftTheSound()
{
    SoundTrack track(rate);
    int64_t at = 0;
    for (; at < 2000; at += piece) {
        track.Put(at, Constant(piece, 7), at - 60);
    }
    for (; at < 2500; at += piece) { // half a second is delivered at once, at its end
        track.Put(at, Constant(piece, 7), 2440);
    }
    for (; at < 3000; at += piece) {
        track.Put(at, Constant(piece, 8), at - 60);
    }
    QVERIFY(All(Heard(track, 2480, piece), 7));
    QVERIFY(All(Heard(track, 2500, 500), 8));
}

void ToolSoundTrackTest::sourceThatIsAlwaysLateIsHeardAllTheSame()
{
    SoundTrack track(rate);
    for (int64_t at = 0; at < 4000; at += piece) {
        track.Put(at, Constant(piece, 7), at + 150); // 150 ms too late
    }
    QVERIFY(All(Heard(track, 4000, 100), 7));
    // Once the source is fast again, the sound moves back.
    for (int64_t at = 4000; at < 20000; at += piece) {
        track.Put(at, Constant(piece, at < 19000 ? 7 : 8), at - 300);
    }
    QVERIFY(All(Heard(track, 19100, 850), 8));
    QVERIFY(All(Heard(track, 20060, 100), 0));
}

void ToolSoundTrackTest::sourceThatIsLateOnlyAtItsStartIsSoonInPlace()
{
    SoundTrack track(rate);
    for (int64_t at = 0; at < 2500; at += piece) {
        track.Put(at, Constant(piece, 7), at + 150);
    }
    QVERIFY2(All(Heard(track, 2500, 100), 7), "it is heard later than captured meanwhile");
    for (int64_t at = 2500; at < 6000; at += piece) {
        track.Put(at, Constant(piece, at < 5000 ? 7 : 8), at - 60);
    }
    QVERIFY2(All(Heard(track, 5080, 900), 8) && All(Heard(track, 6060, 100), 0),
             "two seconds after the last late piece it lies in its place again");
}

void ToolSoundTrackTest::aReturningSourceStartsAfresh()
{
    SoundTrack track(rate);
    track.Put(0, Constant(piece, 7), 0);
    track.Restart();
    track.Put(100, Constant(piece, 8), 0);
    QVERIFY(All(Heard(track, piece, 100 - piece), 0));
    QVERIFY(All(Heard(track, 100, piece), 8));
}

void ToolSoundTrackTest::aReturningSourceIsNotShiftedAsBefore()
{
    SoundTrack track(rate);
    int64_t at = 0;
    for (; at < 2500; at += piece) {
        track.Put(at, Constant(piece, 7), at + 150);
    }
    track.Restart();
    at += 1000;
    track.Put(at, Constant(piece, 8), at - 60);
    QVERIFY(All(Heard(track, at, piece), 8));
    QVERIFY(All(Heard(track, at + piece, 500), 0));
}

void ToolSoundTrackTest::aLongBacklogIsSilence()
{
    SoundTrack track(rate);
    int64_t at = 0;
    for (; at < 60000; at += piece) { // nothing is handed out for a minute
        track.Put(at, Constant(piece, 7), 0);
    }
    QVERIFY(All(Heard(track, 0, 1000), 0));
    QVERIFY(All(Heard(track, at - 1000, 1000), 7));
}

void ToolSoundTrackTest::mixIsTheSumAndNeverWraps()
{
    SoundTrack first(rate);
    SoundTrack second(rate);
    first.Put(0, Constant(piece, 20000), 0);
    second.Put(10, Constant(piece, 20000), 0);
    std::vector<int32_t> sum(60);
    first.AddTo(0, sum);
    second.AddTo(0, sum);
    const Samples mixed = tool::Saturated(sum);
    QCOMPARE(mixed[0], 20000);
    QCOMPARE(mixed[30], 32767);
    QCOMPARE(mixed[58], 20000);
    QCOMPARE(tool::Saturated(std::vector<int32_t>{-70000}).front(), -32768);
}

void ToolSoundTrackTest::stretchingKeepsBothEnds()
{
    const Samples ramp = {0, 100, 10, 110, 20, 120, 30, 130};
    const Samples longer = tool::Stretched(ramp, 7);
    QCOMPARE(longer.size(), size_t{14});
    QCOMPARE(longer.front(), 0);
    QCOMPARE(longer.back(), 130);
    QCOMPARE(longer[2], 5);
    QCOMPARE(tool::Stretched(ramp, 1).size(), size_t{2});
}

QTEST_APPLESS_MAIN(ToolSoundTrackTest)
#include "tool_sound_track_test.moc"
