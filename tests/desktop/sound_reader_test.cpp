// Reads sources of a real sound server that is killed, loses a source, or is asked to move a
// stream.
#include "tests/support/signal/beeper.h"
#include "tests/support/signal/sound_analysis.h"
#include "tests/support/sound_server.h"
#include "tool/sound/pulse/sound_reader.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <thread>

using namespace std::chrono_literals;

namespace {

constexpr int kRate = 48000;
constexpr int kLow = 500; // Hz
constexpr int kHigh = 1300;
constexpr int kBeeps = 9;
constexpr int kFewestRight = 4;
constexpr double kMostOff = 40; // ms
constexpr double kLoud = 5000;  // of 32767; the server's own tones have 16000

const auto kTones = R"(
load-module module-rescue-streams
load-module module-sine-source source_name=low frequency=500
load-module module-sine-source source_name=high frequency=1300
set-default-source high
)";

// Everything a reader receives.
class Ear
{
public:
    explicit Ear(const std::vector<std::string>& sources)
        : m_heard(sources.size()),
          m_reader(sources, kRate,
                   {[this](size_t source, SteadyTime captured, std::span<const int16_t> stereo) {
                        Hear(m_heard[source], captured, stereo);
                    },
                    [this](size_t source) { ++m_heard[source].opened; }})
    {
    }

    bool ListenUntil(const std::function<bool()>& condition, int milliseconds = 15000)
    {
        QElapsedTimer time;
        time.start();
        while (!condition()) {
            if (time.hasExpired(milliseconds)) {
                return false;
            }
            m_reader.Wait(10ms);
        }
        return true;
    }
    void Forget(size_t source)
    {
        m_heard[source].samples.clear();
        m_heard[source].pieces.clear();
    }
    // Waits until this much more has been received.
    bool Listen(size_t source, double seconds)
    {
        Forget(source);
        return ListenUntil([&] { return Seconds(source) >= seconds; });
    }
    void Wait(std::chrono::milliseconds time) { m_reader.Wait(time); }

    double Seconds(size_t source) const
    {
        return static_cast<double>(m_heard[source].samples.size()) / kRate;
    }
    // The loudness of a tone in what was received since Listen().
    double Level(size_t source, int hertz) const
    {
        return Amplitude(m_heard[source].samples, kRate, hertz);
    }
    // The duration of the longest piece received since Listen().
    double LongestPiece(size_t source) const
    {
        const Heard& heard = m_heard[source];
        size_t longest = 0;
        for (size_t i = 0; i < heard.pieces.size(); ++i) {
            const bool last = i + 1 == heard.pieces.size();
            const size_t end = last ? heard.samples.size() : heard.pieces[i + 1].first;
            longest = std::max(longest, end - heard.pieces[i].first);
        }
        return static_cast<double>(longest) / kRate;
    }
    int Opened(size_t source) const { return m_heard[source].opened; }

    // The start times of the beeps received since Listen(), according to the reader.
    std::vector<SteadyTime> Beeps(size_t source, int hertz) const
    {
        const Heard& heard = m_heard[source];
        std::vector<SteadyTime> times;
        for (const double seconds : BeepTimes(heard.samples, kRate, hertz)) {
            const auto sample = static_cast<size_t>(seconds * kRate);
            const auto after =
                std::find_if(heard.pieces.begin(), heard.pieces.end(),
                             [sample](const Piece& one) { return one.first > sample; });
            const Piece& piece = *(after - 1);
            times.push_back(piece.captured +
                            std::chrono::microseconds((sample - piece.first) * 1000000 / kRate));
        }
        return times;
    }

private:
    struct Piece
    {
        size_t first; // sample
        SteadyTime captured;
    };
    struct Heard
    {
        std::vector<int16_t> samples; // left channel
        std::vector<Piece> pieces;
        int opened = 0;
    };

    static void Hear(Heard& heard, SteadyTime captured, std::span<const int16_t> stereo)
    {
        heard.pieces.push_back({heard.samples.size(), captured});
        for (size_t i = 0; i < stereo.size(); i += 2) {
            heard.samples.push_back(stereo[i]);
        }
    }

    std::vector<Heard> m_heard;
    tool::SoundReader m_reader;
};

// The server's index of the only listening stream.
QString Listener(const SoundServer& server)
{
    return server.Ask({"list", "short", "source-outputs"}).section('\t', 0, 0);
}

bool TakeAway(const SoundServer& server, const QString& source)
{
    const QString module = server.Ask({"list", "short", "modules"})
                               .section("source_name=" + source, 0, 0)
                               .section('\n', -1)
                               .section('\t', 0, 0);
    return server.Command({"unload-module", module});
}

} // namespace

class SoundReaderTest : public QObject
{
    Q_OBJECT

private slots:
    void eachSourceIsHeardUnderItsOwnNumber();
    void soundIsDatedByWhenItIsHeard_data();
    void soundIsDatedByWhenItIsHeard();
    void piecesAreShortEnoughToComeInTime();
    void restartedServerIsHeardAgain();
    void sourceThatReturnsIsHeardAgain();
    void noOtherSourceIsHeardInstead();
    void sourceCannotBeExchangedForAnother();
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

void SoundReaderTest::soundIsDatedByWhenItIsHeard_data()
{
    QTest::addColumn<QByteArray>("setUp");
    QTest::addColumn<QString>("source");
    const QByteArray usual = "load-module module-null-sink sink_name=speaker\n";
    QTest::newRow("what an output plays") << usual << "speaker.monitor";
    QTest::newRow("what a microphone hears")
        << usual + "load-module module-remap-source source_name=mic master=speaker.monitor\n"
        << "mic";
}

void SoundReaderTest::soundIsDatedByWhenItIsHeard()
{
    QFETCH(QByteArray, setUp);
    QFETCH(QString, source);
    constexpr int hertz = 1000;
    SoundServer server(setUp);
    QVERIFY(server.Start());
    Beeper beeper({"speaker", hertz}, true);
    Ear ear({source.toStdString()});
    QVERIFY2(ear.Listen(0, 1), "nothing is heard");
    QList<double> off;
    for (int i = 0; i < kBeeps; ++i) {
        const SteadyTime heard = beeper.Beep();
        std::this_thread::sleep_until(heard + 250ms); // like a process that is not scheduled
        QVERIFY(ear.Listen(0, 0.4));
        // A busy machine plays some late, splits or drops them.
        const auto beeps = ear.Beeps(0, hertz);
        if (!beeps.empty()) {
            off << std::chrono::duration<double, std::milli>(beeps.front() - heard).count();
        }
    }
    QString told("dated by so many ms after they are heard:");
    for (const double one : off) {
        told += QString(" %1").arg(one, 0, 'f', 1);
    }
    const auto isRight = [](double one) { return std::abs(one) <= kMostOff; };
    QVERIFY2(std::count_if(off.begin(), off.end(), isRight) >= kFewestRight, qPrintable(told));
}

// What arrives more than 60 ms after its capture is too late for the recording.
void SoundReaderTest::piecesAreShortEnoughToComeInTime()
{
    SoundServer server("load-module module-null-sink sink_name=speaker\n");
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
    QVERIFY(TakeAway(server, "low"));
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
    QVERIFY(TakeAway(server, "low"));
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
