// Whether sound is dated by the moment it is heard, with beeps at known times.
#include "tests/support/ear.h"
#include "tests/support/signal/beeper.h"
#include "tests/support/sound_server.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <numbers>
#include <optional>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

constexpr int kHertz = 1000;
constexpr double kMostOff = 40; // ms

// How far off the reader dates beeps.
class Dates
{
public:
    void Add(SteadyTime heard, const std::vector<SteadyTime>& beeps)
    {
        // A busy machine plays some late, splits or drops them.
        if (!beeps.empty()) {
            const double off =
                std::chrono::duration<double, std::milli>(beeps.front() - heard).count();
            m_nRight += std::abs(off) <= kMostOff ? 1 : 0;
            m_told += QString(" %1").arg(off, 0, 'f', 1);
        }
    }
    int Right() const { return m_nRight; }
    QString Told() const { return "dated by so many ms after they are heard:" + m_told; }

private:
    int m_nRight = 0;
    QString m_told;
};

// A microphone whose samples the test supplies.
class Microphone
{
public:
    Microphone() = default;
    Microphone(const Microphone&) = delete;
    Microphone& operator=(const Microphone&) = delete;
    ~Microphone() { close(m_nPipe); }

    // For the sound server's start script.
    QByteArray SetUp() const
    {
        return "load-module module-pipe-source source_name=mic format=s16le rate=48000 channels=1 "
               "file=" +
               QFile::encodeName(Path()) + '\n';
    }
    bool Open()
    {
        m_nPipe = open(QFile::encodeName(Path()).constData(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return m_nPipe >= 0;
    }

    // The next samples are captured from now on.
    SteadyTime Begin()
    {
        m_begin = std::chrono::steady_clock::now();
        m_nGiven = 0;
        return m_begin;
    }
    // Supplies what it has captured since: 100 ms of the tone, then silence.
    void Capture()
    {
        const std::chrono::duration<double> time = std::chrono::steady_clock::now() - m_begin;
        std::vector<int16_t> samples;
        for (; m_nGiven < static_cast<int>(time.count() * Ear::rate); ++m_nGiven) {
            const double turns = static_cast<double>(m_nGiven) * kHertz / Ear::rate;
            samples.push_back(
                m_nGiven < Ear::rate / 10
                    ? static_cast<int16_t>(8000 * std::sin(2 * std::numbers::pi * turns))
                    : int16_t{0});
        }
        const size_t size = samples.size() * sizeof(int16_t);
        QCOMPARE(write(m_nPipe, samples.data(), size), static_cast<ssize_t>(size));
    }

private:
    QString Path() const { return m_folder.filePath("samples"); }

    QTemporaryDir m_folder;
    int m_nPipe = -1;
    SteadyTime m_begin;
    int m_nGiven = 0;
};

// Begins a beep and returns when it is heard, or the epoch if the server has not told yet.
SteadyTime BeepHeard(Beeper& beeper)
{
    beeper.Beep();
    return beeper.BeepHeard();
}

} // namespace

class SoundDatesTest : public QObject
{
    Q_OBJECT

private slots:
    void soundIsDatedByWhenItIsHeard_data();
    void soundIsDatedByWhenItIsHeard();
    void soundOfAnIdleOutputIsDatedRightFromItsStart_data();
    void soundOfAnIdleOutputIsDatedRightFromItsStart();
    void soundAfterAStallIsDatedByWhenItIsHeard();
};

void SoundDatesTest::soundIsDatedByWhenItIsHeard_data()
{
    QTest::addColumn<QByteArray>("setUp");
    QTest::addColumn<QString>("source");
    const QByteArray usual = "load-module module-null-sink sink_name=speaker norewinds=1\n";
    QTest::newRow("what an output plays") << usual << "speaker.monitor";
    QTest::newRow("what a microphone hears")
        << usual + "load-module module-remap-source source_name=mic master=speaker.monitor\n"
        << "mic";
}

void SoundDatesTest::soundIsDatedByWhenItIsHeard()
{
    QFETCH(QByteArray, setUp);
    QFETCH(QString, source);
    SoundServer server(setUp);
    QVERIFY(server.Start());
    Beeper beeper({"speaker", kHertz}, true);
    Ear ear({source.toStdString()});
    QVERIFY2(ear.Listen(0, 1), "nothing is heard");
    Dates dates;
    for (int i = 0; i < 7; ++i) {
        const SteadyTime heard = BeepHeard(beeper);
        std::this_thread::sleep_until(heard + 250ms); // like a process that is not scheduled
        QVERIFY(ear.Listen(0, 0.4));
        dates.Add(heard, ear.Beeps(0, kHertz));
    }
    QVERIFY2(dates.Right() >= 4, qPrintable(dates.Told()));
}

void SoundDatesTest::soundOfAnIdleOutputIsDatedRightFromItsStart_data()
{
    QTest::addColumn<int>("playedSooner"); // ms
    QTest::newRow("played before it is recorded") << 500;
    QTest::newRow("recorded before it is played") << -300;
}

// Without anything to play this output runs two seconds ahead, and makes up for it then.
void SoundDatesTest::soundOfAnIdleOutputIsDatedRightFromItsStart()
{
    QFETCH(int, playedSooner);
    SoundServer server("load-module module-null-sink sink_name=speaker\n");
    QVERIFY(server.Start());
    std::optional<Beeper> beeper;
    if (playedSooner > 0) {
        beeper.emplace(Tone{"speaker", kHertz}, true);
        QTest::qWait(playedSooner); // by the server's clock, which tells nothing of it
    }
    Ear ear({"speaker.monitor"});
    if (!beeper) {
        ear.ListenUntil([] { return false; }, -playedSooner);
        beeper.emplace(Tone{"speaker", kHertz}, true);
    }
    Dates dates;
    for (int i = 0; i < 4; ++i) {
        SteadyTime heard{};
        QVERIFY(ear.ListenUntil([&] { return (heard = BeepHeard(*beeper)) != SteadyTime(); }));
        ear.Forget(0);
        ear.ListenUntil([&] { return std::chrono::steady_clock::now() > heard + 300ms; });
        dates.Add(heard, ear.Beeps(0, kHertz));
    }
    QVERIFY2(dates.Right() >= 3, qPrintable(dates.Told()));
}

void SoundDatesTest::soundAfterAStallIsDatedByWhenItIsHeard()
{
    Microphone microphone;
    SoundServer server(microphone.SetUp());
    QVERIFY(server.Start());
    QVERIFY(microphone.Open());
    Ear ear({"mic"});
    Dates dates;
    for (int i = 0; i < 3; ++i) {
        const SteadyTime heard = microphone.Begin();
        const auto captured = [&](std::chrono::milliseconds time) {
            microphone.Capture();
            return std::chrono::steady_clock::now() > heard + time;
        };
        ear.ListenUntil([&] { return captured(1200ms); });
        dates.Add(heard, ear.Beeps(0, kHertz));
        ear.Forget(0);
        ear.ListenUntil([] { return false; }, 700); // it delivers nothing
    }
    QVERIFY2(dates.Right() >= 2, qPrintable(dates.Told()));
}

QTEST_GUILESS_MAIN(SoundDatesTest)
#include "sound_dates_test.moc"
