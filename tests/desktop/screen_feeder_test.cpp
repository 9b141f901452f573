// The screen feeder, read like ffmpeg reads it: the frames keep to the clock whatever happens.
#include "tests/support/child_processes.h"
#include "tests/support/feeder_outlet.h"
#include "tests/support/own_screen.h"
#include "tool/feed/fed_inputs.h"
#include "tool/feed/screen_feeder.h"
#include "tool/screen/screen_picture.h"

#include <QTest>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <memory>
#include <utility>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using tool::RecordingTime;

namespace {

constexpr tool::Rectangle kSmall{0, 0, 64, 48};
constexpr int kPictureRate = 30;

std::unique_ptr<Outlet> Pictures(RecordingTime* time, const tool::Rectangle& area = kSmall,
                                 const QString& display = qEnvironmentVariable("DISPLAY"))
{
    return std::make_unique<Outlet>([&](tool::Descriptor pipe) {
        qputenv("DISPLAY", display.toUtf8());
        const auto never = [](pollfd&, tool::SteadyTime) { return false; };
        tool::ScreenFeeder feeder(tool::OpenScreen(area, never).screen, area, {kPictureRate, 1},
                                  std::move(pipe), *time);
        if (feeder.Prepare()) {
            feeder.Run();
        }
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

// Nobody reads until the recording is this old.
void LeaveUnreadUntil(const RecordingTime& time, double seconds)
{
    QTRY_VERIFY2_WITH_TIMEOUT(SecondsSince(*time.Start()) >= seconds, "time stands still", 20000);
}

// Checks that there are as many frames as the time since the start needs, or soon are again.
void ExpectInTime(Outlet& outlet, const RecordingTime& start, const tool::Rectangle& area = kSmall)
{
    double due = 0;
    double count = 0;
    const auto inTime = [&] {
        due = SecondsSince(*start.Start()) * kPictureRate + 1;
        count = static_cast<double>(CountOfPictures(outlet, area));
        return count > due - 4 && count <= due + 1;
    };
    QVERIFY2(outlet.ReadUntil(inTime, 5000),
             qPrintable(QString("%1 pictures instead of %2").arg(count).arg(due)));
}

} // namespace

class ScreenFeederTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void startIsToldWhenThePicturesAreRead();
    void pictureShowsTheScreenOfItsTime();
    void picturesThatWereMissedAreFilledIn();
    void picturesAreAllThereForASlowReader();
    void changeThatFindsNoRoomIsShownLater();
    void picturesEndWithTheirReader();
    void picturesEndWithTheRecording();
    void picturesBeforeTheEndAreNotLost();
    void recordingThatEndsBeforeItsStartHasTwoPictures();
    void recordingEndsWithItsScreen();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Never freed: other processes use it too.
    RecordingTime* m_pTime = nullptr;
};

void ScreenFeederTest::init()
{
    m_pTime = MakeShared<RecordingTime>();
    QVERIFY(m_pTime != nullptr);
}

void ScreenFeederTest::startIsToldWhenThePicturesAreRead()
{
    const auto outlet = Pictures(m_pTime);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QTRY_VERIFY2(outlet->HasSleptUnread(), "the pictures wait for something else");
    QVERIFY2(!m_pTime->Start(), "it is told before anybody reads");
    const Clock::time_point before = Clock::now();
    QVERIFY(outlet->ReadUntil([&] { return m_pTime->Start().has_value(); }));
    QVERIFY(*m_pTime->Start() >= before && *m_pTime->Start() <= Clock::now());
    // The first frame is taken at that moment, and the others follow at the frame rate.
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pTime->Start()) >= 1; }));
    ExpectInTime(*outlet, *m_pTime);
}

// The screen alternates between white and black, and the next frame due shows it. On a busy machine
// the X server may answer too late for some.
void ScreenFeederTest::pictureShowsTheScreenOfItsTime()
{
    OwnScreen screen({"-screen", "0", "64x48x24"});
    QVERIFY2(screen.Good(), "no X server");
    const auto outlet = Pictures(m_pTime, kSmall, screen.Name());
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 5; }));
    constexpr int changes = 10;
    int right = 0;
    for (int i = 0; i < changes; ++i) {
        const bool white = i % 2 == 0;
        screen.Paint(0, 0, kSmall.width, kSmall.height, white ? 0xffffff : 0);
        const auto due = static_cast<qsizetype>(SecondsSince(*m_pTime->Start()) * kPictureRate) + 1;
        QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= due + 3; }));
        right += IsWhite(*outlet, due) == white ? 1 : 0;
        QCOMPARE(IsWhite(*outlet, due + 2), white);
    }
    QVERIFY2(right >= changes / 2,
             qPrintable(QString("%1 of %2 changes are shown in time").arg(right).arg(changes)));
}

void ScreenFeederTest::picturesThatWereMissedAreFilledIn()
{
    const auto outlet = Pictures(m_pTime);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 5; }));
    outlet->Signal(SIGSTOP);
    LeaveUnreadUntil(*m_pTime, 1.2);
    outlet->Signal(SIGCONT);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pTime->Start()) >= 1.7; }));
    ExpectInTime(*outlet, *m_pTime);
}

void ScreenFeederTest::picturesAreAllThereForASlowReader()
{
    const tool::Rectangle area{0, 0, 320,
                               200}; // half a second of frames fits into the pipe and the queue
    const auto outlet = Pictures(m_pTime, area);
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet, area) >= 5; }));
    LeaveUnreadUntil(*m_pTime, 1.7);
    QVERIFY(outlet->ReadUntil([&] { return SecondsSince(*m_pTime->Start()) >= 2.2; }));
    ExpectInTime(*outlet, *m_pTime, area);
}

// The screen changes once, while everything is waiting to be read, and then stays as it is.
void ScreenFeederTest::changeThatFindsNoRoomIsShownLater()
{
    constexpr tool::Rectangle area{0, 0, 320, 200};
    OwnScreen screen({"-screen", "0", "320x200x24"});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(0, 160, 100);
    const auto outlet = Pictures(m_pTime, area, screen.Name());
    QVERIFY2(outlet->IsGood(), "no pictures");
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet, area) >= 5; }));
    // A screen that changes all the time until there is no room.
    const double begin = SecondsSince(*m_pTime->Start());
    for (int i = 0; i < 40; ++i) {
        screen.Paint(0, 0, 40, 40, i % 2 == 0 ? 0xffffff : 0);
        LeaveUnreadUntil(*m_pTime, begin + static_cast<double>(i + 1) / kPictureRate);
    }
    screen.Paint(0, 0, 40, 40, 0x808080);
    LeaveUnreadUntil(*m_pTime, begin + 2.8); // longer than every picture is taken after that
    const auto brightness = [&] {
        const auto bytes = static_cast<qsizetype>(tool::YuvBytes(area.width, area.height));
        const qsizetype last = CountOfPictures(*outlet, area) - 1;
        return static_cast<uchar>(outlet->Bytes()[tool::skippedBytes + last * bytes]);
    };
    QVERIFY2(outlet->ReadUntil([&] { return brightness() > 100 && brightness() < 150; }, 5000),
             qPrintable(QString("the last picture is of brightness %1").arg(brightness())));
}

void ScreenFeederTest::picturesEndWithTheirReader()
{
    const auto outlet = Pictures(m_pTime);
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 2; }));
    outlet->Close();
    QTRY_VERIFY2(outlet->HasEnded(), "the process stays");
}

// Every picture before the end, and none after it.
void ScreenFeederTest::picturesEndWithTheRecording()
{
    const auto outlet = Pictures(m_pTime);
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 20; }));
    m_pTime->Finish(Clock::now());
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 5000), "the pictures go on");
    const std::chrono::duration<double> length = *m_pTime->End() - *m_pTime->Start();
    QCOMPARE(CountOfPictures(*outlet),
             static_cast<qsizetype>(std::ceil(length.count() * kPictureRate)));
    QTRY_VERIFY2(outlet->HasEnded(), "the process stays");
}

// A slow reader gets what was waiting for it.
void ScreenFeederTest::picturesBeforeTheEndAreNotLost()
{
    const tool::Rectangle area{0, 0, 320, 200};
    const auto outlet = Pictures(m_pTime, area);
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet, area) >= 5; }));
    const double begin = SecondsSince(*m_pTime->Start());
    LeaveUnreadUntil(*m_pTime, begin + 0.4);
    m_pTime->Finish(Clock::now());
    LeaveUnreadUntil(*m_pTime, begin + 0.8);
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 5000), "the pictures go on");
    const std::chrono::duration<double> length = *m_pTime->End() - *m_pTime->Start();
    QCOMPARE(CountOfPictures(*outlet, area),
             static_cast<qsizetype>(std::ceil(length.count() * kPictureRate)));
}

// ffmpeg makes no file that plays without pictures.
void ScreenFeederTest::recordingThatEndsBeforeItsStartHasTwoPictures()
{
    m_pTime->Finish(Clock::now());
    const auto outlet = Pictures(m_pTime);
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 5000), "the pictures go on");
    QCOMPARE(CountOfPictures(*outlet), qsizetype{2});
}

void ScreenFeederTest::recordingEndsWithItsScreen()
{
    OwnScreen screen({"-screen", "0", "64x48x24"});
    QVERIFY2(screen.Good(), "no X server");
    const auto outlet = Pictures(m_pTime, kSmall, screen.Name());
    QVERIFY(outlet->ReadUntil([&] { return CountOfPictures(*outlet) >= 5; }));
    QVERIFY(!m_pTime->End());
    screen.Kill();
    QVERIFY2(outlet->ReadUntil([&] { return outlet->IsAtEnd(); }, 5000), "the pictures go on");
    QVERIFY2(m_pTime->End().has_value(), "the sound would go on");
}

QTEST_GUILESS_MAIN(ScreenFeederTest)
#include "screen_feeder_test.moc"
