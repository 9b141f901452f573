// Recordings that are interrupted in every possible way, several at once. The screen shows a
// counter: its value at the interruption is compared with the last frame that plays.
#include "tests/support/ordinary_movie.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRate = 30; // the pattern's frame rate
constexpr double kMostLost = 2;

// A moment in a recording.
struct Moment
{
    int shown = -1;   // the number on the screen
    double taken = 0; // seconds that ffmpeg has read
};

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

// The numbers in the frames, in order.
QList<int> NumbersIn(const QString& path)
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
double SoundIn(const QString& path)
{
    const Outcome decoded =
        RunProgram("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:a", "-ac", "1",
                              "-ar", "8000", "-f", "u8", "-"});
    return static_cast<double>(decoded.output.size()) / 8000;
}

} // namespace

class ToolCutShortTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void quitLeavesAnOrdinaryMovie();
    void killedAtAnyMomentPlaysUpToTwoSecondsBefore();
    void recorderKilledEndsTheRecording();
    void sessionEndedEndsTheRecording();
    void movieThatIsThereAlreadyIsLeftAlone();
    void powerCutLosesTwoSeconds();
    void fullDiskLeavesWhatHadRoom();
    void volumeFilledByAnotherProgramLeavesWhatHadRoom();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    int ShownNow() const { return static_cast<int>(m_time.elapsed() * kRate / 1000); }
    Moment Now(const Take& take) const { return {ShownNow(), take.Taken()}; }
    void ExpectUpTo(const QString& path, Moment moment, bool sound, double mostLost = kMostLost);
    void RecordFor(Take& take, int milliseconds);

    QTemporaryDir m_folder;
    TestPatternProcess m_pattern{QStringList{"--rate", QString::number(kRate)}};
    QElapsedTimer m_time; // since the pattern's first frame
    double m_worst = 0;   // seconds lost
};

void ToolCutShortTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
    m_time.start();
    RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
}

// Waits for the first frame, and then this long.
void ToolCutShortTest::RecordFor(Take& take, int milliseconds)
{
    QTRY_VERIFY2_WITH_TIMEOUT(take.HasPicture(), take.Text(), 20000);
    const QDeadlineTimer end(milliseconds);
    QTRY_VERIFY2_WITH_TIMEOUT(end.hasExpired(), "time stands still", milliseconds + 10000);
}

// Checks that the recording plays up to `mostLost` seconds before the moment. On a machine too busy
// to record in time, what has not reached ffmpeg does not count as lost.
void ToolCutShortTest::ExpectUpTo(const QString& path, Moment moment, bool sound, double mostLost)
{
    const QList<int> numbers = NumbersIn(path);
    const QByteArray name = QFileInfo(path).fileName().toUtf8();
    QVERIFY2(!numbers.isEmpty(), name + ": no picture plays");
    QVERIFY2(std::is_sorted(numbers.begin(), numbers.end()), name + ": pictures in disorder");
    constexpr double usualDelay = 0.5;
    const double recorded = std::min(static_cast<double>(moment.shown - numbers.first()) / kRate,
                                     moment.taken + usualDelay);
    const double lost = recorded - static_cast<double>(numbers.last() - numbers.first()) / kRate;
    m_worst = std::max(m_worst, lost);
    QVERIFY2(lost <= mostLost,
             name + ": " + QByteArray::number(lost) + " s lost of " + QByteArray::number(recorded));
    const double silent = sound ? recorded - SoundIn(path) : 0;
    QVERIFY2(silent <= mostLost, name + ": sound of " + QByteArray::number(silent) + " s lost");
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

// What is known to be on the disk, and nothing else, at every moment of the recording.
void ToolCutShortTest::powerCutLosesTwoSeconds()
{
    const QString log = Path("synced");
    Take take(Path("power.mp4"), "0:1",
              {"LD_PRELOAD=" FDATASYNC_PRELOAD, "LUMENFOLD_SYNC_LOG=" + log});
    RecordFor(take, 0);
    const auto synced = [&] {
        QFile file(log);
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>();
    };
    // Just before the next fragment reaches the disk, when the loss is greatest.
    for (const qsizetype syncs : {3, 5, 7}) {
        QTRY_VERIFY2_WITH_TIMEOUT(synced().size() > syncs, "the disk has nothing new", 20000);
        const Moment moment = Now(take);
        const QList<QByteArray> sizes = synced(); // the last line is empty
        QFile whole(take.Path());
        QVERIFY(whole.open(QIODevice::ReadOnly));
        const QString left = Path(QString("power %1.mp4").arg(syncs));
        QFile part(left);
        QVERIFY(part.open(QIODevice::WriteOnly));
        part.write(whole.read(sizes.at(sizes.size() - 3).toLongLong()));
        part.close();
        ExpectUpTo(left, moment, true);
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

// A file that cannot grow, even for root.
void ToolCutShortTest::fullDiskLeavesWhatHadRoom()
{
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{25000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    Take take(Path("full.mp4"), "0:1");
    QTRY_VERIFY2_WITH_TIMEOUT(take.HasPicture(), take.Text(), 20000);
    setrlimit(RLIMIT_FSIZE, &before);
    QTRY_VERIFY2_WITH_TIMEOUT(take.HasEnded(), "it records on without room", 40000);
    const Moment moment = Now(take);
    QVERIFY2(take.Text().contains("File too large"), take.Text());
    QVERIFY(take.ExitCode() != 0);
    // The incomplete fragment is removed.
    QTRY_VERIFY(QFileInfo(take.Path()).size() < 25000);
    ExpectUpTo(take.Path(), moment, true);
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
}

void ToolCutShortTest::volumeFilledByAnotherProgramLeavesWhatHadRoom()
{
    const QString volume = Path("volume");
    QVERIFY(QDir().mkdir(volume));
    if (mount("none", QFile::encodeName(volume), "tmpfs", 0, "size=8m") != 0) {
        QSKIP("only root can make a volume for this");
    }
    const auto unmount = qScopeGuard([&] { umount2(QFile::encodeName(volume), MNT_DETACH); });
    Take take(volume + "/r.mp4", "0:1");
    RecordFor(take, 2200);
    const Moment moment = Now(take);
    QFile other(volume + "/other");
    QVERIFY(other.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    while (other.write(QByteArray(4096, 'x')) == 4096) {
    }
    QVERIFY2(take.WaitForEnd(), "it records on without room");
    const auto isSettled = [&] {
        return RunProgram("ffmpeg", {"-v", "error", "-i", take.Path(), "-f", "null", "-"})
            .error.isEmpty();
    };
    QTRY_VERIFY2(isSettled(), "it does not play to its end");
    ExpectUpTo(take.Path(), moment, true);
}

QTEST_GUILESS_MAIN(ToolCutShortTest)
#include "tool_cut_short_test.moc"
