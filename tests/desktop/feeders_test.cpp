// The two feeders, read like ffmpeg reads them: frames and sound keep to the clock whatever
// happens.
#include "tests/support/own_screen.h"
#include "tests/support/signal/sound_analysis.h"
#include "tests/support/sound_server.h"
#include "tool/arguments.h"
#include "tool/screen_feeder.h"
#include "tool/screen_picture.h"
#include "tool/sound_feeder.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <functional>
#include <memory>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using tool::RecordingStart;

namespace {

constexpr int kRate = 44100;
constexpr int kLow = 500; // Hz
constexpr int kHigh = 1300;
constexpr double kWhole = 14000; // the server's tones have 16384
constexpr tool::Rectangle kSmall{0, 0, 64, 48};
constexpr int kPictureRate = 30;

const auto kTones = R"(
load-module module-sine-source source_name=low frequency=500
load-module module-sine-source source_name=high frequency=1300
)";

double SecondsSince(Clock::time_point moment)
{
    return std::chrono::duration<double>(Clock::now() - moment).count();
}

QList<QByteArray> Children()
{
    QFile file(QString("/proc/self/task/%1/children").arg(getpid()));
    return file.open(QIODevice::ReadOnly) ? file.readAll().simplified().split(' ')
                                          : QList<QByteArray>();
}

// A feeder and its output.
class Outlet
{
public:
    // `start` returns the pipe to read, or a negative number on failure. It ignores SIGCHLD, which
    // is undone here because the exit codes of the children are needed.
    explicit Outlet(const std::function<int()>& start)
    {
        struct sigaction before = {};
        sigaction(SIGCHLD, nullptr, &before);
        const QList<QByteArray> others = Children();
        m_nPipe = start();
        sigaction(SIGCHLD, &before, nullptr);
        for (const QByteArray& child : Children()) {
            m_nFeeder = others.contains(child) ? m_nFeeder : child.toInt();
        }
    }
    Outlet(const Outlet&) = delete;
    Outlet& operator=(const Outlet&) = delete;
    ~Outlet()
    {
        Close();
        if (m_nFeeder > 0) {
            kill(m_nFeeder, SIGKILL);
            waitpid(m_nFeeder, nullptr, 0);
        }
    }

    bool IsGood() const { return m_nPipe >= 0 && m_nFeeder > 0; }
    void Signal(int number) const { kill(m_nFeeder, number); }
    bool HasEnded()
    {
        if (m_nFeeder > 0 && waitpid(m_nFeeder, nullptr, WNOHANG) == m_nFeeder) {
            m_nFeeder = 0;
        }
        return m_nFeeder == 0;
    }

    void Close()
    {
        close(m_nPipe);
        m_nPipe = -1;
    }
    // Reads what is there, waiting up to 10 ms.
    void Read()
    {
        pollfd pipe{m_nPipe, POLLIN, 0};
        if (!m_bAtEnd && poll(&pipe, 1, 10) > 0) {
            QByteArray piece(1 << 16, '\0');
            const ssize_t count = read(m_nPipe, piece.data(), static_cast<size_t>(piece.size()));
            m_bAtEnd = count <= 0;
            m_bytes += piece.left(std::max<qsizetype>(count, 0));
        }
    }
    bool ReadUntil(const std::function<bool()>& condition, int milliseconds = 15000)
    {
        QElapsedTimer time;
        time.start();
        while (!condition()) {
            if (time.hasExpired(milliseconds)) {
                return false;
            }
            Read();
        }
        return true;
    }
    bool IsAtEnd() const { return m_bAtEnd; }
    const QByteArray& Bytes() const { return m_bytes; }

private:
    int m_nPipe = -1;
    pid_t m_nFeeder = 0;
    bool m_bAtEnd = false;
    QByteArray m_bytes;
};

std::unique_ptr<Outlet> Sound(const tool::FeederPlan& plan)
{
    return std::make_unique<Outlet>([&] { return tool::StartSoundFeeder(plan); });
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

// The loudness of a tone in the last half second.
double Level(const Outlet& outlet, int hertz)
{
    std::vector<int16_t> samples;
    const qsizetype from = std::max<qsizetype>(outlet.Bytes().size() / 4 - kRate / 2, 0);
    for (qsizetype at = from * 4; at + 4 <= outlet.Bytes().size(); at += 4) {
        samples.push_back(static_cast<int16_t>(static_cast<uchar>(outlet.Bytes()[at]) |
                                               outlet.Bytes()[at + 1] << 8));
    }
    return Amplitude(samples, kRate, hertz);
}

std::unique_ptr<Outlet> Pictures(RecordingStart* start, const tool::Rectangle& area = kSmall,
                                 const QString& display = qEnvironmentVariable("DISPLAY"))
{
    return std::make_unique<Outlet>([&] {
        return tool::StartScreenFeeder({display.toStdString(), area, {kPictureRate, 1}, start})
            .value_or(-1);
    });
}

qsizetype CountOfPictures(const Outlet& outlet, const tool::Rectangle& area = kSmall)
{
    return (outlet.Bytes().size() - tool::skippedBytes) /
           static_cast<qsizetype>(tool::YuvBytes(area.width, area.height));
}

// Whether the corner of that frame is bright, away from the mouse in the middle.
bool IsWhite(const Outlet& outlet, qsizetype picture)
{
    const auto bytes = static_cast<qsizetype>(tool::YuvBytes(kSmall.width, kSmall.height));
    return static_cast<uchar>(outlet.Bytes()[tool::skippedBytes + picture * bytes]) > 128;
}

// Checks that there are as many frames as the time since the start needs, or soon are again.
void ExpectInTime(Outlet& outlet, const RecordingStart& start, const tool::Rectangle& area = kSmall)
{
    double due = 0;
    double count = 0;
    const auto inTime = [&] {
        due = SecondsSince(*start.Get()) * kPictureRate + 1;
        count = static_cast<double>(CountOfPictures(outlet, area));
        return count > due - 4 && count <= due + 1;
    };
    QVERIFY2(outlet.ReadUntil(inTime, 5000),
             qPrintable(QString("%1 pictures instead of %2").arg(count).arg(due)));
}

} // namespace

class FeedersTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void soundCountsFromTheFirstPicture();
    void soundWithoutPicturesBesideItBeginsWhenItIsRead();
    void soundIsTheSumOfItsSources();
    void soundGoesOnWithoutAServer();
    void soundIsAllThereForAReaderWhoComesLate();
    void restartedServerIsInTheSoundAgain();
    void soundEndsWithThePictures();
    void soundEndsWithItsReader();
    void startIsToldWhenThePicturesAreRead();
    void pictureShowsTheScreenOfItsTime();
    void picturesThatWereMissedAreFilledIn();
    void picturesAreAllThereForASlowReader();
    void picturesEndWithTheirReader();
    void noPicturesWithoutAScreen();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Never freed: other processes use it too.
    RecordingStart* m_pStart = nullptr;
};

void FeedersTest::init()
{
    m_pStart = RecordingStart::Make();
    QVERIFY(m_pStart != nullptr);
}

void FeedersTest::soundCountsFromTheFirstPicture()
{
    const auto outlet = Sound({{"missing"}, kRate, m_pStart});
    QVERIFY(outlet->IsGood());
    const Clock::time_point moment = Clock::now() - 700ms;
    m_pStart->Set(moment);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 2; }));
    ExpectInTime(*outlet, moment);
}

void FeedersTest::soundWithoutPicturesBesideItBeginsWhenItIsRead()
{
    const auto outlet = Sound({{"missing"}, kRate, nullptr});
    QVERIFY(outlet->IsGood());
    QTest::qWait(500);
    const Clock::time_point moment = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 1.5; }));
    ExpectInTime(*outlet, moment);
}

void FeedersTest::soundIsTheSumOfItsSources()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    const auto outlet = Sound({{"low", "high"}, kRate, nullptr});
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

void FeedersTest::soundGoesOnWithoutAServer()
{
    qputenv("PULSE_SERVER", "unix:/nonexistent/socket");
    const auto outlet = Sound({{"low"}, kRate, nullptr});
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) > 0; }));
    const Clock::time_point moment = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) >= 1; }));
    QVERIFY2(std::abs(SecondsSince(moment) - 1) < 0.3, "silence is not as long as its time");
    QCOMPARE(outlet->Bytes(), QByteArray(outlet->Bytes().size(), '\0'));
}

// A busy ffmpeg does not read for a while.
void FeedersTest::soundIsAllThereForAReaderWhoComesLate()
{
    m_pStart->Set(Clock::now());
    const auto outlet = Sound({{"missing"}, kRate, m_pStart});
    const Clock::time_point moment = *m_pStart->Get();
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 0.5; }));
    QTest::qWait(2500);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(moment) >= 3.2; }));
    ExpectInTime(*outlet, moment);
}

void FeedersTest::restartedServerIsInTheSoundAgain()
{
    SoundServer server(kTones);
    QVERIFY(server.Start());
    const auto outlet = Sound({{"low"}, kRate, nullptr});
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) > 5000; }), "nothing is heard");
    server.Kill();
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) < 100; }), "no silence");
    QVERIFY(server.Start());
    QVERIFY2(outlet->ReadUntil([&] { return Level(*outlet, kLow) > 5000; }),
             "nothing is heard after the restart");
}

void FeedersTest::soundEndsWithThePictures()
{
    const pid_t grabber = fork();
    if (grabber == 0) {
        m_pStart->NameGrabber();
        m_pStart->Set(Clock::now());
        pause();
        _exit(0);
    }
    const auto outlet = Sound({{"missing"}, kRate, m_pStart});
    const bool heard = outlet->ReadUntil([&] { return SecondsOfSound(*outlet) > 0.5; });
    kill(grabber, SIGKILL);
    waitpid(grabber, nullptr, 0);
    QVERIFY2(heard, "the sound does not go on while there are pictures");
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 5000), "the sound goes on");
}

void FeedersTest::soundEndsWithItsReader()
{
    const auto outlet = Sound({{"missing"}, kRate, nullptr});
    QVERIFY(outlet->ReadUntil([&] { return SecondsOfSound(*outlet) > 0.1; }));
    outlet->Close();
    QTRY_VERIFY2(outlet->HasEnded(), "the process stays");
}

void FeedersTest::startIsToldWhenThePicturesAreRead()
{
    const auto outlet = Pictures(m_pStart);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QTest::qWait(300);
    QVERIFY2(!m_pStart->Get(), "it is told before anybody reads");
    const Clock::time_point before = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return m_pStart->Get().has_value(); }));
    QVERIFY(*m_pStart->Get() >= before && *m_pStart->Get() <= Clock::now());
    // The first frame is taken at that moment, and the others follow at the frame rate.
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pStart->Get()) >= 1; }));
    ExpectInTime(*outlet, *m_pStart);
}

// The screen alternates between white and black, and the next frame due shows it. On a busy machine
// the X server may answer too late for some.
void FeedersTest::pictureShowsTheScreenOfItsTime()
{
    OwnScreen screen({"-screen", "0", "64x48x24"});
    QVERIFY2(screen.Good(), "no X server");
    const auto outlet = Pictures(m_pStart, kSmall, screen.Name());
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 5; }));
    constexpr int changes = 10;
    int right = 0;
    for (int i = 0; i < changes; ++i) {
        const bool white = i % 2 == 0;
        screen.Paint(0, 0, kSmall.width, kSmall.height, white ? 0xffffff : 0);
        const auto due = static_cast<qsizetype>(SecondsSince(*m_pStart->Get()) * kPictureRate) + 1;
        QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= due + 3; }));
        right += IsWhite(*outlet, due) == white ? 1 : 0;
        QCOMPARE(IsWhite(*outlet, due + 2), white);
    }
    QVERIFY2(right >= changes / 2,
             qPrintable(QString("%1 of %2 changes are shown in time").arg(right).arg(changes)));
}

void FeedersTest::picturesThatWereMissedAreFilledIn()
{
    const auto outlet = Pictures(m_pStart);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 5; }));
    outlet->Signal(SIGSTOP);
    QTest::qWait(1000);
    outlet->Signal(SIGCONT);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pStart->Get()) >= 1.7; }));
    ExpectInTime(*outlet, *m_pStart);
}

void FeedersTest::picturesAreAllThereForASlowReader()
{
    const tool::Rectangle area{0, 0, 320,
                               200}; // half a second of frames fits into the pipe and the queue
    const auto outlet = Pictures(m_pStart, area);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet, area) >= 5; }));
    QTest::qWait(1500);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pStart->Get()) >= 2.2; }));
    ExpectInTime(*outlet, *m_pStart, area);
}

void FeedersTest::picturesEndWithTheirReader()
{
    const auto outlet = Pictures(m_pStart);
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 2; }));
    outlet->Close();
    QTRY_VERIFY2(outlet->HasEnded(), "the process stays");
    QVERIFY(m_pStart->GrabberEnded());
}

void FeedersTest::noPicturesWithoutAScreen()
{
    QElapsedTimer time;
    time.start();
    QVERIFY(!Pictures(m_pStart, kSmall, ":4321")->IsGood());
    QVERIFY2(!time.hasExpired(2500), "it waits as for a screen that is slow");
    QVERIFY(!m_pStart->GrabberEnded());
}

QTEST_GUILESS_MAIN(FeedersTest)
#include "feeders_test.moc"
