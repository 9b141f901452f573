// Recordings by `tool` as on macOS, several at once, that lose their processes at any moment.
#include "tests/support/macos/av_signal.h"
#include "tests/support/macos/mac.h"
#include "tests/support/ordinary_movie.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDateTime>
#include <QDeadlineTimer>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <memory>
#include <vector>

namespace {

constexpr double kMostLost = 2;

enum class Victim { Ffmpeg, Tool, All, Recorder };

struct Kill
{
    std::unique_ptr<Take> take;
    Victim victim = Victim::Ffmpeg;
    bool sound = false;
    QDeadlineTimer due{QDeadlineTimer::Forever};
    pid_t ffmpeg = 0;
    double recorded = -1; // seconds
};

// The seconds since the first picture, by the clock.
double Recorded(const Take& take)
{
    const QByteArray text = take.Text();
    const qsizetype at = text.indexOf("start: ") + 7;
    const double start = text.mid(at, text.indexOf(',', at) - at).toDouble();
    const double now = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    // What a busy machine has not encoded in time does not count.
    constexpr double usualDelay = 0.5;
    return std::min(now - start, take.Taken() + usualDelay);
}

void End(Kill& kill)
{
    kill.ffmpeg = kill.take->Ffmpeg();
    kill.recorded = Recorded(*kill.take);
    switch (kill.victim) {
    case Victim::Ffmpeg:
        kill.take->EndFfmpeg(SIGKILL);
        break;
    case Victim::Tool:
        kill.take->EndTool(SIGKILL);
        break;
    case Victim::All:
        kill.take->EndAll(SIGKILL);
        break;
    case Victim::Recorder:
        kill.take->EndRecorder();
        break;
    }
}

} // namespace

class MacosCutShortTest : public QObject
{
    Q_OBJECT

private slots:
    void killedAtAnyMomentPlaysUpToTwoSecondsBefore();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    static void Check(const Kill& kill);
};

void MacosCutShortTest::Check(const Kill& kill)
{
    const QString path = kill.take->Path();
    const QByteArray name = path.toUtf8() + ": ";
    QVERIFY(kill.take->WaitForEnd());
    QTRY_VERIFY2_WITH_TIMEOUT(!IsAlive(kill.ffmpeg), name + "ffmpeg goes on", 20000);
    if (kill.victim == Victim::Ffmpeg || kill.victim == Victim::Recorder) {
        QTRY_VERIFY2(IsOrdinary(path), name + "it is still fragmented");
    }
    const double pictures = static_cast<double>(AvBrightness(path).size()) / kAvPictureRate;
    QVERIFY2(pictures > 0, name + "no picture plays");
    QVERIFY2(kill.recorded - pictures <= kMostLost,
             name + QByteArray::number(pictures) + " s of " + QByteArray::number(kill.recorded));
    const double sound = static_cast<double>(AvSamples(path).size()) / kAvSoundRate;
    QVERIFY2(!kill.sound || kill.recorded - sound <= kMostLost,
             name + "sound of " + QByteArray::number(sound) + " s");
}

void MacosCutShortTest::killedAtAnyMomentPlaysUpToTwoSecondsBefore()
{
    const Mac mac("uid");
    RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", " "});
    const quint32 seed = QRandomGenerator::global()->generate();
    std::printf("seed %u\n", seed);
    QRandomGenerator random(seed);
    constexpr std::array victims{Victim::Ffmpeg, Victim::Tool, Victim::All, Victim::Recorder};
    std::vector<Kill> kills(2 * victims.size());
    for (size_t i = 0; i < kills.size(); ++i) {
        kills[i].sound = i % 2 == 1;
        kills[i].victim = victims.at(i / 2);
        kills[i].take = std::make_unique<Take>(mac.Path(QString("%1.mp4").arg(i)),
                                               kills[i].sound ? "0:0 0:2" : "0",
                                               QStringList{"MAC_SCREEN=160x120"});
    }
    const auto next = [&] {
        for (Kill& kill : kills) {
            if (kill.due.isForever() && kill.take->HasPicture()) {
                kill.due.setRemainingTime(random.bounded(3500));
            }
            if (kill.recorded < 0 && kill.due.hasExpired()) {
                End(kill);
            }
        }
        return std::all_of(kills.begin(), kills.end(),
                           [](const Kill& kill) { return kill.recorded >= 0; });
    };
    QTRY_VERIFY2_WITH_TIMEOUT(next(), "recordings do not start", 60000);
    for (const Kill& kill : kills) {
        Check(kill);
        if (QTest::currentTestFailed()) {
            return;
        }
    }
}

QTEST_GUILESS_MAIN(MacosCutShortTest)
#include "macos_cut_short_test.moc"
