// Pictures of virtual X screens: pointers, and screens that shrink or go.
#include "tests/support/x11_pictures.h"

#include <QRect>
#include <QTest>

#include <csignal>
#include <cstdlib>
#include <future>

class X11ScreenChangeTest : public QObject
{
    Q_OBJECT

private slots:
    static void pointerThatMovesIsTaken();
    static void pointerLeavesNoTraceBehind();
    static void pointerOfAnotherShapeIsTaken();
    static void screenThatShrinksIsTaken();
    static void serverThatStopsAfterShrinkingIsNotWaitedFor();
    static void screenThatGoesIsLost();
    static void noPicturesWithoutAScreen();
};

void X11ScreenChangeTest::pointerThatMovesIsTaken()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 10, 10);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    for (int i = 1; i < 100; ++i) {
        screen.MovePointer(10 + 2 * i, 10 + i);
        QCOMPARE(pictures.Next(), Outcome::Taken);
        const QRect pointer = pictures.Bright();
        QVERIFY2(std::abs(pointer.left() - (10 + 2 * i)) <= 2 && pointer.width() < 20,
                 qPrintable(QString("from %1 to %2").arg(pointer.left()).arg(pointer.right())));
        QVERIFY2(std::abs(pointer.top() - (10 + i)) <= 2 && pointer.height() < 20,
                 qPrintable(QString("from %1 to %2").arg(pointer.top()).arg(pointer.bottom())));
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
}

// Small changes under it and far from it, while it moves or rests.
void X11ScreenChangeTest::pointerLeavesNoTraceBehind()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 10, 10);
    QVERIFY2(pictures.IsOpen(), "no X server");
    for (int i = 0; i < 60; ++i) {
        screen.MovePointer(4 * i, 2 * i);
        if (i % 3 == 0) {
            screen.Paint(4 * i, 2 * i, 20, 20, i % 2 == 0 ? 0x808080 : 0);
        }
        QCOMPARE(pictures.Next(), Outcome::Taken);
    }
    screen.Paint(0, 0, kArea.width, kArea.height, 0);
    screen.MovePointer(300, 180);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    const QRect pointer = pictures.Bright();
    QVERIFY2(!pointer.isNull(), "no pointer");
    QVERIFY2(pointer.left() >= 295 && pointer.top() >= 175,
             qPrintable(QString("something at %1, %2").arg(pointer.left()).arg(pointer.top())));
}

void X11ScreenChangeTest::pointerOfAnotherShapeIsTaken()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 100, 100);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    constexpr uint16_t dot = 38;
    screen.SetPointer(dot);
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.Next(), Outcome::Unchanged);
}

void X11ScreenChangeTest::screenThatShrinksIsTaken()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0xffffff, 2, 2);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    screen.Resize(160, 100);
    QCOMPARE(pictures.NextAnswer(), Outcome::Taken);
    QCOMPARE(pictures.At(150, 90), int{kWhite});
    QCOMPARE(pictures.At(170, 90), int{kBlack});
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
}

// It refuses the picture, and says nothing more.
void X11ScreenChangeTest::serverThatStopsAfterShrinkingIsNotWaitedFor()
{
    OwnScreen screen(kUsual + QStringList{"-extension", "DAMAGE"});
    X11Pictures pictures = PicturesOf(screen, 0xffffff, 2, 2);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QCOMPARE(pictures.Next(), Outcome::Taken);
    screen.Occupy();
    QCOMPARE(pictures.Next(1ms), Outcome::Waiting);
    screen.Resize(160, 100);
    screen.Release();
    for (int i = 0; i < 100; ++i) { // by then it has answered the question of before, too
        screen.MovePointer(i, 3);
    }
    screen.Signal(SIGSTOP);
    auto look = std::async(std::launch::async, [&] { return pictures.Next(1ms); });
    const bool comesBack = look.wait_for(5s) == std::future_status::ready;
    screen.Signal(SIGCONT);
    QVERIFY2(comesBack, "the look takes as long as the server is stopped");
    QCOMPARE(look.get(), Outcome::Waiting);
    QCOMPARE(pictures.NextAnswer(), Outcome::Taken);
    QCOMPARE(pictures.At(150, 90), int{kWhite});
    QCOMPARE(pictures.At(170, 90), int{kBlack});
}

void X11ScreenChangeTest::screenThatGoesIsLost()
{
    OwnScreen screen(kUsual);
    QVERIFY2(screen.Good(), "no X server");
    X11Pictures pictures(screen);
    QVERIFY(pictures.IsOpen() && pictures.BecomesStill());
    screen.Kill();
    QCOMPARE(pictures.Next(), Outcome::Lost);
}

void X11ScreenChangeTest::noPicturesWithoutAScreen()
{
    QVERIFY(!tool::OpenX11Screen("", kArea));
    QVERIFY(!tool::OpenX11Screen(":4321", kArea));
    OwnScreen screen(kUsual);
    QVERIFY2(screen.Good(), "no X server");
    const std::string name = screen.Name().toStdString();
    for (const tool::Rectangle& area : {tool::Rectangle{-2, 0, 20, 20}, {0, -2, 20, 20}, {}}) {
        QVERIFY(!tool::OpenX11Screen(name, area));
    }
}

QTEST_GUILESS_MAIN(X11ScreenChangeTest)
#include "x11_screen_change_test.moc"
