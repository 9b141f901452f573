// Recordings that are interrupted in every possible way, several at once. The screen shows a
// counter: its value at the interruption is compared with the last frame that plays.
#include "tests/support/cut_short.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

enum class Victim { Ffmpeg, Tool, All };

void EndByForce(const Take& take, Victim victim)
{
    switch (victim) {
    case Victim::Ffmpeg:
        take.EndFfmpeg(SIGKILL);
        break;
    case Victim::Tool:
        take.EndTool(SIGKILL);
        break;
    case Victim::All:
        take.EndAll(SIGKILL);
        break;
    }
}

} // namespace

class ToolCutShortTest : public CutShortTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void quitLeavesAnOrdinaryMovie();
    void killedAtAnyMomentPlaysUpToTwoSecondsBefore();
    void recorderKilledEndsTheRecording();
    void sessionEndedEndsTheRecording();
    void movieThatIsThereAlreadyIsLeftAlone();
};

void ToolCutShortTest::initTestCase()
{
    Prepare();
}

void ToolCutShortTest::quitLeavesAnOrdinaryMovie()
{
    Take take(Path("quit.mp4"), "0:1");
    RecordFor(take, 2500);
    const Moment moment = Now(take);
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd() && take.ExitCode() == 0, take.Text());
    QVERIFY2(IsOrdinary(take.Path()), "it is still fragmented");
    ExpectUpTo(take.Path(), moment, true, 0.3);
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
    const Outcome probe = RunProgram(TOOL_PROGRAM, {"-i", take.Path()});
    const double seconds = static_cast<double>(NumbersIn(take.Path()).size()) / 29.97;
    QVERIFY2(std::abs(DurationIn(probe.error) - seconds) < 0.1, probe.error);
}

// Fifty recordings, ten at a time. Half have sound. Of some ffmpeg is killed, of some `tool`, and
// of some all processes, so that nothing finishes their files.
void ToolCutShortTest::killedAtAnyMomentPlaysUpToTwoSecondsBefore()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    std::printf("seed %u\n", seed);
    QRandomGenerator random(seed);
    constexpr int rounds = 5;
    constexpr size_t atOnce = 10;
    constexpr std::array victims{Victim::Ffmpeg, Victim::Tool, Victim::All};
    struct Kill
    {
        std::unique_ptr<Take> take;
        bool sound = false;
        Victim victim = Victim::Ffmpeg;
        pid_t ffmpeg = 0;
        QDeadlineTimer due{QDeadlineTimer::Forever};
        Moment moment;
    };
    for (int round = 0; round < rounds; ++round) {
        std::vector<Kill> kills(atOnce);
        for (size_t i = 0; i < atOnce; ++i) {
            Kill& kill = kills[i];
            kill.sound = i % 2 == 1;
            kill.victim = victims.at((static_cast<size_t>(round) + i / 2) % victims.size());
            kill.take = std::make_unique<Take>(Path(QString("%1 %2.mp4").arg(round).arg(i)),
                                               kill.sound ? "0:1" : "0");
        }
        const auto next = [&] {
            for (Kill& kill : kills) {
                if (kill.due.isForever() && kill.take->HasPicture()) {
                    kill.due.setRemainingTime(random.bounded(3000));
                }
                if (kill.moment.shown < 0 && kill.due.hasExpired()) {
                    kill.moment = Now(*kill.take);
                    kill.ffmpeg = kill.take->Ffmpeg();
                    EndByForce(*kill.take, kill.victim);
                }
            }
            return std::all_of(kills.begin(), kills.end(),
                               [](const Kill& kill) { return kill.moment.shown >= 0; });
        };
        const QDeadlineTimer patience(60000);
        while (!next()) {
            QVERIFY2(!patience.hasExpired(), "recordings do not start");
            QTest::qWait(5);
        }
        for (const Kill& kill : kills) {
            QVERIFY(kill.take->WaitForEnd());
            QVERIFY(kill.take->ExitCode() != 0);
            QTRY_VERIFY2(!IsAlive(kill.ffmpeg), "ffmpeg goes on");
            if (kill.victim == Victim::Ffmpeg) {
                QVERIFY2(IsOrdinary(kill.take->Path()), qPrintable(kill.take->Path()));
            }
            ExpectUpTo(kill.take->Path(), kill.moment, kill.sound);
            if (QTest::currentTestFailed()) {
                return;
            }
        }
    }
    std::printf("at worst %.2f s lost\n", m_worst);
}

void ToolCutShortTest::recorderKilledEndsTheRecording()
{
    Take take(Path("recorder killed.mp4"), "0:1");
    RecordFor(take, 1500);
    const Moment moment = Now(take);
    take.EndRecorder();
    QTRY_VERIFY2(IsOrdinary(take.Path()), "it records on");
    ExpectUpTo(take.Path(), moment, true, 1);
}

void ToolCutShortTest::sessionEndedEndsTheRecording()
{
    Take take(Path("session ended.mp4"), "0:1");
    RecordFor(take, 1500);
    const Moment moment = Now(take);
    take.EndAll(SIGTERM);
    QTRY_VERIFY2(IsOrdinary(take.Path()), "it records on");
    ExpectUpTo(take.Path(), moment, true, 1);
}

void ToolCutShortTest::movieThatIsThereAlreadyIsLeftAlone()
{
    const QString path = Path("there already.mp4");
    {
        Take take(path, "0");
        RecordFor(take, 1000);
        take.EndAll(SIGKILL);
        QVERIFY(take.WaitForEnd());
    }
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    QVERIFY(!IsOrdinary(path));
    Take take(path, "0");
    take.Type("y\n");
    QVERIFY2(take.WaitForEnd() && take.ExitCode() != 0, take.Text());
    QVERIFY2(take.Text().contains(QFile::encodeName(path) + ": File exists"), take.Text());
    file.seek(0);
    QVERIFY(file.readAll() == content);
}

QTEST_GUILESS_MAIN(ToolCutShortTest)
#include "tool_cut_short_test.moc"
