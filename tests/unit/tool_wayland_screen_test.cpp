// When there is a new picture of a compositor, and what happens when it fails or goes.
#include "tests/support/fake_pictures.h"

#include <QElapsedTimer>
#include <QTest>

#include <vector>

using namespace std::chrono_literals;
using Answer = FakeCompositor::Answer;
using Outcome = tool::Screen::Outcome;

class WaylandScreenTest : public QObject
{
    Q_OBJECT

private slots:
    static void failedFramesAreAskedForAgain();
    static void strangeOrderOfEventsIsSurvived_data();
    static void strangeOrderOfEventsIsSurvived();
    static void stillScreenIsAskedForOnce();
    static void changeOfAStillScreenIsThereAtTheNextLook();
    static void lastPictureStaysWhileTheNextIsMade();
    static void compositorThatFallsSilentLeavesTheLastPicture();
    static void compositorThatGoesIsLost_data();
    static void compositorThatGoesIsLost();
    static void outputThatGoesIsLost();
};

void WaylandScreenTest::failedFramesAreAskedForAgain()
{
    RunningCompositor compositor(With({Answer::Failed, Answer::FailedLater, Answer::Failed,
                                       Answer::FailedLater, Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(30, 10), kWhite);
    // As a monitor that sleeps: it is not asked more often than pictures are needed.
    compositor.Change([](FakeCompositor& behaviour) { behaviour.answers = {Answer::FailedLater}; });
    const int before = compositor.FramesAskedFor();
    for (int i = 0; i < 5; ++i) {
        compositor.Damage();
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
    QCOMPARE(compositor.FramesAskedFor() - before, 5);
    compositor.Change([](FakeCompositor& behaviour) { behaviour.answers = {Answer::Copied}; });
    compositor.Damage();
    QCOMPARE(pictures.Next(), Outcome::Taken);
}

void WaylandScreenTest::strangeOrderOfEventsIsSurvived_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::newRow("a picture that nobody has described") << Answer::NotDescribed;
    QTest::newRow("a description that comes twice") << Answer::DescribedTwice;
}

void WaylandScreenTest::strangeOrderOfEventsIsSurvived()
{
    QFETCH(Answer, answer);
    for (const uint32_t version : {1U, 3U}) {
        FakeCompositor behaviour = With({answer, answer, Answer::Copied});
        behaviour.screencopyVersion = version;
        RunningCompositor compositor(behaviour);
        FakePictures pictures(compositor);
        for (int i = 0; i < 3; ++i) {
            compositor.Damage();
            QCOMPARE(pictures.Next(), Outcome::Taken);
            QCOMPARE(pictures.At(30, 10), kWhite);
        }
    }
}

void WaylandScreenTest::stillScreenIsAskedForOnce()
{
    const RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.Next(), Outcome::Unchanged);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
    QVERIFY2(timer.elapsed() < 500,
             qPrintable(QString("waited %1 ms for a still screen").arg(timer.elapsed())));
    QCOMPARE(compositor.FramesAskedFor(), 2);
}

void WaylandScreenTest::changeOfAStillScreenIsThereAtTheNextLook()
{
    RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
        QTRY_COMPARE(compositor.CopiesWaiting(), 1);
        compositor.Change(
            [&](FakeCompositor& behaviour) { behaviour.pixel = i % 2 == 0 ? 0 : kWhitePixel; });
        compositor.Damage();
        QVERIFY(QTest::qWaitFor([&] { return pictures.Next(0ms) == Outcome::Taken; }, 1000));
        QCOMPARE(pictures.At(30, 10), i % 2 == 0 ? kBlack : kWhite);
    }
}

// A frame without room in the pipe is written later.
void WaylandScreenTest::lastPictureStaysWhileTheNextIsMade()
{
    RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.Next(), Outcome::Unchanged);
    QTRY_COMPARE(compositor.CopiesWaiting(), 1);
    compositor.Change([](FakeCompositor& behaviour) { behaviour.pixel = 0; });
    compositor.Damage();
    pictures.Write();
    QCOMPARE(pictures.At(30, 10), kWhite);
}

void WaylandScreenTest::compositorThatFallsSilentLeavesTheLastPicture()
{
    RunningCompositor compositor(With({Answer::Copied, Answer::Nothing}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.Damage();
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(pictures.Next(100ms), Outcome::Unchanged);
    }
    const RunningCompositor silent(With({Answer::Nothing}));
    FakePictures none(silent);
    QCOMPARE(none.Next(60ms), Outcome::Waiting);
    QVERIFY2(none.LostReason().ends_with("delivers no picture of it"), none.LostReason().c_str());
}

void WaylandScreenTest::compositorThatGoesIsLost_data()
{
    QTest::addColumn<QList<Answer>>("answers");
    QTest::newRow("before the first picture") << QList{Answer::Disconnected};
    QTest::newRow("in the first picture") << QList{Answer::DisconnectedLater};
    QTest::newRow("before a picture") << QList{Answer::Copied, Answer::Disconnected};
    QTest::newRow("in a picture") << QList{Answer::Copied, Answer::DisconnectedLater};
}

void WaylandScreenTest::compositorThatGoesIsLost()
{
    QFETCH(QList<Answer>, answers);
    RunningCompositor compositor(With(std::vector(answers.begin(), answers.end())));
    FakePictures pictures(compositor);
    for (qsizetype i = 1; i < answers.size(); ++i) {
        QCOMPARE(pictures.Next(), Outcome::Taken);
        compositor.Damage();
    }
    QVERIFY(QTest::qWaitFor([&] { return pictures.Next(100ms) == Outcome::Lost; }, 2000));
    QCOMPARE(pictures.Next(100ms), Outcome::Lost); // and stays so
    QVERIFY(!pictures.LostReason().empty());
}

void WaylandScreenTest::outputThatGoesIsLost()
{
    RunningCompositor compositor(With({Answer::Copied}));
    FakePictures pictures(compositor);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    compositor.RemoveOutputs();
    QVERIFY(QTest::qWaitFor([&] { return pictures.Next(100ms) == Outcome::Lost; }, 2000));
    QCOMPARE(QString::fromStdString(pictures.LostReason()), QString("The recorded screen is gone"));
}

QTEST_GUILESS_MAIN(WaylandScreenTest)
#include "tool_wayland_screen_test.moc"
