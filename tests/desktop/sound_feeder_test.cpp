// The sound feeder, read like ffmpeg reads it: the sound keeps to the clock whatever happens.
#include "tests/support/child_processes.h"
#include "tests/support/feeder_outlet.h"
#include "tests/support/signal/sound_analysis.h"
#include "tests/support/sound_server.h"
#include "tool/feed/sound_feeder.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using tool::RecordingTime;

namespace {

constexpr int kRate = 44100;
constexpr int kLow = 500; // Hz
constexpr int kHigh = 1300;
constexpr double kWhole = 14000; // the server's tones have 16384

const auto kTones = R"(
load-module module-sine-source source_name=low frequency=500
load-module module-sine-source source_name=high frequency=1300
)";

std::unique_ptr<Outlet> Sound(const std::vector<std::string>& sources, const RecordingTime* time)
{
    return std::make_unique<Outlet>([&](tool::Descriptor pipe) {
        const RecordingTime withoutPictures;
        tool::SoundFeeder({sources, kRate}, std::move(pipe),
                          time != nullptr ? *time : withoutPictures)
            .Run();
    });
}

double SecondsOfSound(const Outlet& outlet)
{
    return static_cast<double>(outlet.Bytes().size()) / 4 / kRate;
}

// Checks that the sound is as long as the time since that moment, or soon is again.
void ExpectInTime(Outlet& outlet, Clock::time_point moment)
{
    // The feeder writes sound 60 ms late, when every source has delivered it.
    constexpr double delay = 0.06;
    double late = 0;
    double least = 1e9;
    const auto inTime = [&] {
        late = SecondsSince(moment) - SecondsOfSound(outlet);
        least = std::min(least, late);
        return late < 0.3;
    };
    const bool reached = outlet.ReadUntil(inTime, 5000);
    outlet.ReadUntil([&] { return !inTime() || least < delay; }, 300);
    QVERIFY2(reached, qPrintable(QString("%1 s behind").arg(late)));
    QVERIFY2(least >= delay, qPrintable(QString("only %1 s behind").arg(least)));
}

// The loudness of a tone in the last half second, or another part of one.
double Level(const Outlet& outlet, int hertz, double seconds = 0.5)
{
    std::vector<int16_t> samples;
    const auto last = static_cast<qsizetype>(seconds * kRate);
    const qsizetype from = std::max<qsizetype>(outlet.Bytes().size() / 4 - last, 0);
    for (qsizetype at = from * 4; at + 4 <= outlet.Bytes().size(); at += 4) {
        samples.push_back(static_cast<int16_t>(static_cast<uchar>(outlet.Bytes()[at]) |
                                               outlet.Bytes()[at + 1] << 8));
    }
    return Amplitude(samples, kRate, hertz);
}

} // namespace

class SoundFeederTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void soundCountsFromTheFirstPicture();
    void soundWithoutPicturesBesideItBeginsWhenItIsRead();
    void soundComesInAsFewPiecesAsFfmpegReads();
    void soundIsTheSumOfItsSources();
    void soundGoesOnWithoutAServer();
    void soundIsAllThereForAReaderWhoComesLate();
    void restartedServerIsInTheSoundAgain();
    void soundIsCompleteUpToItsEnd();
    void soundThatNobodyHasReadYetIsCompleteUpToItsEnd();
    void recordingThatEndsBeforeItBeginsHasNoSound();
    void soundEndsWithItsReader();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Never freed: other processes use it too.
    RecordingTime* m_pTime = nullptr;
};

void SoundFeederTest::init()
{
    m_pTime = MakeShared<RecordingTime>();
    QVERIFY(m_pTime != nullptr);
}

void SoundFeederTest::soundCountsFromTheFirstPicture()
{
    const auto outlet = Sound({"missing"}, m_pTime);
    QVERIFY(outlet->IsGood());
    const Clock::time_point moment = Clock::now() - 700ms;
    m_pTime->Begin(moment);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 2; }));
    ExpectInTime(*outlet, moment);
}

void SoundFeederTest::soundWithoutPicturesBesideItBeginsWhenItIsRead()
{
    const auto outlet = Sound({"missing"}, nullptr);
    QVERIFY(outlet->IsGood());
    const Clock::time_point made = Clock::now();
    QTRY_VERIFY(SecondsSince(made) >= 0.5); // more than may be missing
    const Clock::time_point moment = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 1.5; }));
    ExpectInTime(*outlet, moment);
}

// Each piece wakes ffmpeg up.
void SoundFeederTest::soundComesInAsFewPiecesAsFfmpegReads()
{
    const auto outlet = Sound({"missing"}, nullptr);
    QVERIFY(outlet->IsGood());
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) >= 0.5; }));
    const double before = SecondsOfSound(*outlet);
    double last = before;
    int pieces = 0;
    QVERIFY(outlet->ReadUntil([&] {
        pieces += SecondsOfSound(*outlet) > last ? 1 : 0;
        last = SecondsOfSound(*outlet);
        return last >= before + 1;
    }));
    QVERIFY2(pieces <= 13, qPrintable(QString("%1 pieces a second").arg(pieces)));
}

void SoundFeederTest::soundIsTheSumOfItsSources()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    const auto outlet = Sound({"low", "high"}, nullptr);
    QString levels;
    const auto both = [&] {
        const double low = Level(*outlet, kLow);
        const double high = Level(*outlet, kHigh);
        levels = QString("levels %1 and %2").arg(low).arg(high);
        return low > kWhole && high > kWhole;
    };
    QVERIFY2(outlet->ReadUntil(both), qPrintable(levels));
    // Mixed up, they would only sometimes be complete.
    const Clock::time_point moment = Clock::now();
    int looks = 0;
    int whole = 0;
    outlet->ReadUntil([&] {
        ++looks;
        whole += both() ? 1 : 0;
        return SecondsSince(moment) >= 1;
    });
    QVERIFY2(whole > looks * 3 / 4, qPrintable(levels));
}

void SoundFeederTest::soundGoesOnWithoutAServer()
{
    qputenv("PULSE_SERVER", "unix:/nonexistent/socket");
    const auto outlet = Sound({"low"}, nullptr);
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) > 0; }));
    const Clock::time_point moment = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) >= 1; }));
    QVERIFY2(std::abs(SecondsSince(moment) - 1) < 0.3, "silence is not as long as its time");
    QCOMPARE(outlet->Bytes(), QByteArray(outlet->Bytes().size(), '\0'));
}

// A busy ffmpeg does not read for a while.
void SoundFeederTest::soundIsAllThereForAReaderWhoComesLate()
{
    m_pTime->Begin(Clock::now());
    const auto outlet = Sound({"missing"}, m_pTime);
    const Clock::time_point moment = *m_pTime->Start();
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 0.5; }));
    QTRY_VERIFY(SecondsSince(moment) >= 3);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 3.2; }));
    ExpectInTime(*outlet, moment);
}

void SoundFeederTest::restartedServerIsInTheSoundAgain()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    const auto outlet = Sound({"low"}, nullptr);
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) > 5000; }), "nothing is heard");
    server.Kill();
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) < 100; }), "no silence");
    QVERIFY(server.Start());
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) > 5000; }),
             "nothing is heard after the restart");
}

void SoundFeederTest::soundIsCompleteUpToItsEnd()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    const auto outlet = Sound({"low"}, m_pTime);
    m_pTime->Begin(Clock::now());
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) > 5000; }), "nothing is heard");
    const double seconds = SecondsSince(*m_pTime->Start());
    m_pTime->Finish(Clock::now());
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 1000), "the sound goes on");
    // It is written in pieces of 10 ms.
    QVERIFY2(std::abs(SecondsOfSound(*outlet) - seconds) < 0.015,
             qPrintable(QString("%1 s instead of %2").arg(SecondsOfSound(*outlet)).arg(seconds)));
    QVERIFY2(Level(*outlet, kLow, 0.04) > 5000, "the last sound is missing");
}

void SoundFeederTest::soundThatNobodyHasReadYetIsCompleteUpToItsEnd()
{
    const auto outlet = Sound({"missing"}, m_pTime);
    m_pTime->Begin(Clock::now() - 500ms);
    m_pTime->Finish(Clock::now());
    QVERIFY2(QTest::qWaitFor([&] { return outlet->HasEnded(); }), "it waits for a reader");
    QVERIFY(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }));
    QVERIFY2(std::abs(SecondsOfSound(*outlet) - 0.5) < 0.015,
             qPrintable(QString("%1 s").arg(SecondsOfSound(*outlet))));
}

void SoundFeederTest::recordingThatEndsBeforeItBeginsHasNoSound()
{
    const auto outlet = Sound({"missing"}, m_pTime);
    m_pTime->Finish(Clock::now());
    QVERIFY2(QTest::qWaitFor([&] { return outlet->HasEnded(); }), "it waits for a beginning");
}

void SoundFeederTest::soundEndsWithItsReader()
{
    const auto outlet = Sound({"missing"}, nullptr);
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) > 0.1; }));
    outlet->Close();
    QTRY_VERIFY2(outlet->HasEnded(), "the process stays");
}

QTEST_GUILESS_MAIN(SoundFeederTest)
#include "sound_feeder_test.moc"
