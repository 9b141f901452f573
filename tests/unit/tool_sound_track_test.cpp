#include "tests/support/heard_sound.h"

#include <QTest>

class ToolSoundTrackTest : public QObject
{
    Q_OBJECT

private slots:
    void soundLiesWhereItWasCaptured();
    void gapsAreSilent();
    void gapsAreSilentAlsoWhereOlderSoundLay();
    void whatComesTooLateIsLeftOut();
    void oneStallDoesNotShiftTheSound();
    void sourceThatIsAlwaysLateIsHeardAllTheSame();
    void sourceThatIsLateOnlyAtItsStartIsSoonInPlace();
    void aReturningSourceStartsAfresh();
    void aReturningSourceIsNotShiftedAsBefore();
    void aLongBacklogIsSilence();
    void mixIsTheSumAndNeverWraps();
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

QTEST_APPLESS_MAIN(ToolSoundTrackTest)
#include "tool_sound_track_test.moc"
