// Reads sources of a real sound server that is killed, loses a source, or is asked to move a
// stream.
#include "tests/support/ear.h"
#include "tests/support/sound_server.h"
#include "tool/sound/sound_server.h"

#include <QTest>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr int kLow = 500; // Hz
constexpr int kHigh = 1300;
constexpr int kMostDelay = 500; // ms until a new default output is heard
constexpr double kLoud = 5000;  // of 32767; the server's own tones have 16000

const auto kTones = R"(
load-module module-rescue-streams
load-module module-sine-source source_name=low frequency=500
load-module module-sine-source source_name=high frequency=1300
set-default-source high
)";

const auto kOutputs = R"(
load-module module-rescue-streams
load-module module-null-sink sink_name=first norewinds=1
load-module module-null-sink sink_name=second norewinds=1
load-module module-sine sink=first frequency=500
load-module module-sine sink=second frequency=1300
load-module module-sine-source source_name=microphone frequency=900
set-default-sink first
)";

// The server's index of the only listening stream.
QString Listener(const SoundServer& server)
{
    return server.Ask({"list", "short", "source-outputs"}).section('\t', 0, 0);
}

// `what`: "source_name=NAME" or "sink_name=NAME".
bool TakeAway(const SoundServer& server, const QString& what)
{
    const QString module = server.Ask({"list", "short", "modules"})
                               .section(what, 0, 0)
                               .section('\n', -1)
                               .section('\t', 0, 0);
    return server.Command({"unload-module", module});
}

// Whether this tone is heard soon, and so long that it is no remainder.
bool HearsSoon(Ear& ear, int hertz)
{
    ear.Forget(0);
    return ear.ListenUntil([&] { return ear.Seconds(0) >= 0.1 && ear.Level(0, hertz) > kLoud / 2; },
                           kMostDelay);
}

} // namespace

class SoundReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void eachSourceIsHeardUnderItsOwnNumber();
    void piecesAreShortEnoughToComeInTime();
    void restartedServerIsHeardAgain();
    void sourceThatReturnsIsHeardAgain();
    void noOtherSourceIsHeardInstead();
    void sourceCannotBeExchangedForAnother();
    void computerSoundsFollowTheDefaultOutput();
    void computerSoundsReturnWithAnOutputOrTheServer();
    void waitingWithoutAServerTakesItsTime();
};

void SoundReaderTest::eachSourceIsHeardUnderItsOwnNumber()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    Ear ear({"low", "missing", "high"});
    QVERIFY2(ear.Listen(0, 0.5) && ear.Listen(2, 0.5), "nothing is heard");
    QVERIFY2(ear.Level(0, kLow) > kLoud, qPrintable(QString::number(ear.Level(0, kLow))));
    QVERIFY2(ear.Level(2, kHigh) > kLoud, qPrintable(QString::number(ear.Level(2, kHigh))));
    QVERIFY2(ear.Level(0, kHigh) < kLoud / 10 && ear.Level(2, kLow) < kLoud / 10,
             "a source is heard under the number of another");
    QCOMPARE(ear.Seconds(1), 0.0);
    QCOMPARE(ear.Opened(0), 1);
}

// What arrives more than 60 ms after its capture is too late for the recording.
void SoundReaderTest::piecesAreShortEnoughToComeInTime()
{
    SoundServer server("load-module module-null-sink sink_name=speaker norewinds=1\n");
    QVERIFY(server.Start());
    Ear ear({"speaker.monitor"});
    QVERIFY2(ear.Listen(0, 0.5), "nothing is heard");
    QVERIFY(ear.Listen(0, 2));
    const double longest = ear.LongestPiece(0);
    QVERIFY2(longest <= 0.06, qPrintable(QString("a piece of %1 s").arg(longest)));
}

void SoundReaderTest::restartedServerIsHeardAgain()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    Ear ear({"low", "high"});
    QVERIFY2(ear.Listen(0, 0.2) && ear.Listen(1, 0.2), "nothing is heard");
    for (int times = 2; times <= 3; ++times) {
        server.Kill();
        ear.Wait(10ms);
        QVERIFY(server.Start());
        QVERIFY2(ear.Listen(0, 0.5) && ear.Listen(1, 0.5), "nothing is heard after the restart");
        QVERIFY(ear.Level(0, kLow) > kLoud && ear.Level(1, kHigh) > kLoud);
        QCOMPARE(ear.Opened(0), times);
        QCOMPARE(ear.Opened(1), times);
    }
}

void SoundReaderTest::sourceThatReturnsIsHeardAgain()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    Ear ear({"low", "high"});
    QVERIFY2(ear.Listen(0, 0.2) && ear.Listen(1, 0.2), "nothing is heard");
    QVERIFY(TakeAway(server, "source_name=low"));
    QVERIFY2(ear.Listen(1, 0.5), "the other source is lost as well");
    QVERIFY(
        server.Command({"load-module", "module-sine-source", "source_name=low", "frequency=500"}));
    QVERIFY2(ear.Listen(0, 0.5), "it is not heard again");
    QVERIFY(ear.Level(0, kLow) > kLoud);
    QVERIFY2(ear.Opened(0) >= 2, "what is heard then is joined to what was heard before");
    QCOMPARE(ear.Opened(1), 1);
}

// The server moves streams from a source that is gone to another one, if they allow it.
void SoundReaderTest::noOtherSourceIsHeardInstead()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    Ear ear({"low"});
    QVERIFY2(ear.Listen(0, 0.2), "nothing is heard");
    QVERIFY(TakeAway(server, "source_name=low"));
    ear.ListenUntil([] { return false; }, 300); // what was still in transit
    ear.Forget(0);
    constexpr int milliseconds = 1500; // the reader retries twice a second
    QVERIFY2(!ear.ListenUntil([&] { return ear.Seconds(0) > 0; }, milliseconds),
             "another source is heard");
}

void SoundReaderTest::sourceCannotBeExchangedForAnother()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    Ear ear({"low"});
    QVERIFY2(ear.Listen(0, 0.2), "nothing is heard");
    QVERIFY2(!Listener(server).isEmpty(), "nobody listens");
    QVERIFY2(!server.Command({"move-source-output", Listener(server), "high"}),
             "the server moves it to another source");
    QVERIFY(ear.Listen(0, 0.5));
    QVERIFY(ear.Level(0, kLow) > kLoud && ear.Level(0, kHigh) < kLoud / 10);
}

// As when a headset is plugged in.
void SoundReaderTest::computerSoundsFollowTheDefaultOutput()
{
    SoundServer server(kOutputs);
    QVERIFY(server.Start());
    Ear ear({tool::computerSounds});
    QVERIFY2(ear.Listen(0, 0.2) && ear.Level(0, kLow) > kLoud / 2, "the default is not heard");
    QVERIFY(server.Command({"set-default-sink", "second"}));
    QVERIFY2(HearsSoon(ear, kHigh), "the new default is not heard within half a second");
    QCOMPARE(ear.Opened(0), 2);
    QVERIFY(TakeAway(server, "sink_name=second"));
    QVERIFY2(HearsSoon(ear, kLow), "the output that is left is not heard within half a second");
    QVERIFY2(!server.Command({"move-source-output", Listener(server), "microphone"}),
             "the server exchanges the computer's sounds for a microphone");
}

void SoundReaderTest::computerSoundsReturnWithAnOutputOrTheServer()
{
    SoundServer server(kOutputs);
    QVERIFY(server.Start());
    Ear ear({tool::computerSounds});
    QVERIFY2(ear.Listen(0, 0.2), "nothing is heard");
    QVERIFY(TakeAway(server, "sink_name=second") && TakeAway(server, "sink_name=first"));
    ear.ListenUntil([] { return false; }, 100); // what was still in transit
    ear.Forget(0);
    QVERIFY2(!ear.ListenUntil([&] { return ear.Seconds(0) > 0; }, 700), "a microphone is heard");
    QVERIFY(server.Command({"load-module", "module-null-sink", "sink_name=third", "norewinds=1"}) &&
            server.Command({"load-module", "module-sine", "sink=third", "frequency=1300"}));
    QVERIFY2(HearsSoon(ear, kHigh), "the new output is not heard within half a second");
    server.Kill();
    ear.Wait(10ms);
    QVERIFY(server.Start());
    QVERIFY2(ear.Listen(0, 0.3) && ear.Level(0, kLow) > kLoud / 2,
             "the output of the restarted server is not heard");
}

void SoundReaderTest::waitingWithoutAServerTakesItsTime()
{
    qputenv("PULSE_SERVER", "unix:/nonexistent/socket");
    Ear ear({"low"});
    QElapsedTimer time;
    time.start();
    constexpr qint64 times = 40;
    for (qint64 i = 0; i < times; ++i) {
        ear.Wait(20ms);
    }
    QVERIFY2(time.elapsed() >= times * 20 / 2 && time.elapsed() < times * 20 * 10,
             qPrintable(QString("%1 ms").arg(time.elapsed())));
    QCOMPARE(ear.Seconds(0), 0.0);
}

QTEST_GUILESS_MAIN(SoundReaderTest)
#include "sound_reader_test.moc"
