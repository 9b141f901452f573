// Pictures of virtual X screens: when there is a new one, and what it shows.
#include "tests/support/own_screen.h"
#include "tool/screen/screen_picture.h"
#include "tool/screen/x11/x11_screen.h"

#include <QFile>
#include <QRect>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <future>
#include <memory>
#include <vector>

using namespace std::chrono_literals;
using Outcome = tool::Screen::Outcome;

namespace {

constexpr tool::Rectangle kArea{0, 0, 320, 200};
constexpr auto kSize = "320x200x24";
constexpr uint8_t kWhite = 235; // as luma
constexpr uint8_t kBlack = 16;

class X11Pictures
{
public:
    explicit X11Pictures(const OwnScreen& screen, const tool::Rectangle& area = kArea)
        : m_screen(tool::OpenX11Screen(screen.Name().toStdString(), area)),
          m_area(area),
          m_frame(tool::YuvBytes(area.width, area.height))
    {
    }

    bool IsOpen() const { return m_screen != nullptr; }
    Outcome Next(std::chrono::milliseconds patience = 5s)
    {
        const Outcome outcome = m_screen->Next(std::chrono::steady_clock::now() + patience);
        if (outcome == Outcome::Taken) {
            m_screen->Write(m_frame.data());
        }
        return outcome;
    }
    // Whether nothing changes any more, after a few pictures: the server may report the beginning.
    bool BecomesStill()
    {
        int looks = 0;
        while (looks < 100 && Next() != Outcome::Unchanged) {
            ++looks;
        }
        return looks < 100;
    }
    // The brightness in the last picture.
    int At(int x, int y) const
    {
        return m_frame[static_cast<size_t>(y) * static_cast<size_t>(m_area.width) +
                       static_cast<size_t>(x)];
    }
    // What is bright in it.
    QRect Bright() const
    {
        QRect all;
        for (int y = 0; y < m_area.height; ++y) {
            for (int x = 0; x < m_area.width; ++x) {
                all = At(x, y) > 100 ? all.united({x, y, 1, 1}) : all;
            }
        }
        return all;
    }

private:
    std::unique_ptr<tool::Screen> m_screen;
    tool::Rectangle m_area;
    std::vector<uint8_t> m_frame;
};

const QStringList kUsual{"-screen", "0", kSize};

// The screen in one colour, 0xRRGGBB, with the mouse there.
X11Pictures PicturesOf(OwnScreen& screen, uint32_t colour, int mouseX, int mouseY)
{
    if (screen.Good()) {
        screen.ShowColour(colour, mouseX, mouseY);
    }
    return X11Pictures(screen);
}

} // namespace

class X11ScreenTest : public QObject
{
    Q_OBJECT

private slots:
    static void stillScreenIsUnchanged();
    static void everySmallChangeIsTaken_data();
    static void everySmallChangeIsTaken();
    static void changeDuringALookIsTakenWithIt();
    static void pointerThatMovesIsTaken();
    static void pointerLeavesNoTraceBehind();
    static void pointerOfAnotherShapeIsTaken();
    static void changeThatIsNotReportedIsTaken_data();
    static void changeThatIsNotReportedIsTaken();
    static void screenThatNeverRestsIsTakenEachTime();
    static void screenThatShrinksIsTaken();
    static void serverThatStopsAfterShrinkingIsNotWaitedFor();
    static void screenThatGoesIsLost();
    static void noPicturesWithoutAScreen();
};

void X11ScreenTest::stillScreenIsUnchanged()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 300, 150);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    for (int i = 0; i < 100; ++i) {
        QCOMPARE(pictures.Next(), Outcome::Unchanged);
    }
}

void X11ScreenTest::everySmallChangeIsTaken_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<bool>("rests");
    QTest::newRow("between pauses") << kUsual << true;
    QTest::newRow("one after another") << kUsual << false;
    QTest::newRow("with colours of ten bits") << QStringList{"-screen", "0", "320x200x30"} << true;
    QTest::newRow("without damage reports")
        << kUsual + QStringList{"-extension", "DAMAGE"} << false;
    QTest::newRow("without shared memory")
        << kUsual + QStringList{"-extension", "MIT-SHM"} << false;
}

// The next picture after each change shows it: none is lost, whenever it comes.
void X11ScreenTest::everySmallChangeIsTaken()
{
    QFETCH(QStringList, options);
    QFETCH(bool, rests);
    OwnScreen screen(options);
    X11Pictures pictures = PicturesOf(screen, 0, 310, 190);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QCOMPARE(pictures.Next(), Outcome::Taken);
    for (int i = 0; i < 300; ++i) {
        const int x = i * 16 % 288;
        const int y = i * 7 % 180;
        screen.Paint(x, y, 4, 4, 0xffffff);
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QVERIFY2(pictures.At(x + 1, y + 1) == kWhite,
                 qPrintable(QString("change %1 is not in the picture").arg(i)));
        QVERIFY(!rests || pictures.BecomesStill());
        screen.Paint(x, y, 4, 4, 0);
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QVERIFY2(pictures.At(x + 1, y + 1) == kBlack,
                 qPrintable(QString("change %1 stays in the picture").arg(i)));
    }
}

// The server gets our questions before the change, and answers them after it.
void X11ScreenTest::changeDuringALookIsTakenWithIt()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 310, 190);
    QVERIFY2(pictures.IsOpen(), "no X server");
    for (int i = 0; i < 40; ++i) {
        QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
        screen.Occupy();
        QCOMPARE(pictures.Next(1ms), Outcome::Waiting);
        const bool white = i % 2 == 0;
        screen.Paint(0, 0, 100, 180, white ? 0xffffff : 0);
        screen.Release();
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QCOMPARE(pictures.At(20, 20), int{white ? kWhite : kBlack});
    }
}

void X11ScreenTest::pointerThatMovesIsTaken()
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
void X11ScreenTest::pointerLeavesNoTraceBehind()
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

void X11ScreenTest::pointerOfAnotherShapeIsTaken()
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

void X11ScreenTest::changeThatIsNotReportedIsTaken_data()
{
    QTest::addColumn<int>("depth");
    QTest::newRow("eight bits") << 24;
    QTest::newRow("ten bits") << 30;
}

// As with drivers that show what a program draws without telling the server: the file is the memory
// of the screen.
void X11ScreenTest::changeThatIsNotReportedIsTaken()
{
    QFETCH(int, depth);
    const QTemporaryDir folder;
    OwnScreen screen({"-screen", "0", QString("320x200x%1").arg(depth), "-fbdir", folder.path()});
    X11Pictures pictures = PicturesOf(screen, 0, 310, 190);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    QFile file(folder.filePath("Xvfb_screen0"));
    QVERIFY2(file.open(QIODevice::ReadWrite), qPrintable(file.fileName()));
    constexpr qint64 rowBytes = qint64{4} * kArea.width;
    uchar* memory = file.map(file.size() - rowBytes * kArea.height, rowBytes * kArea.height);
    QVERIFY(memory != nullptr);
    constexpr int row = 101;
    std::fill_n(memory + row * rowBytes, 40 * 4, uchar{0xff});
    int looks = 0;
    while (pictures.Next() != Outcome::Taken) {
        QVERIFY2(++looks < 20, "it is never taken");
    }
    QCOMPARE(pictures.At(4, row), int{kWhite});
    // From then on nothing is left to reports.
    std::fill_n(memory + row * rowBytes, 40 * 4, uchar{0});
    QCOMPARE(pictures.Next(), Outcome::Taken);
    QCOMPARE(pictures.At(4, row), int{kBlack});
}

// And is found still again when it does rest.
void X11ScreenTest::screenThatNeverRestsIsTakenEachTime()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0, 310, 190);
    QVERIFY2(pictures.IsOpen(), "no X server");
    for (int i = 0; i < 200; ++i) {
        const bool white = i % 2 == 0;
        screen.Paint(0, 0, kArea.width, 100, white ? 0xffffff : 0);
        QCOMPARE(pictures.Next(), Outcome::Taken);
        QCOMPARE(pictures.At(20, 20), int{white ? kWhite : kBlack});
    }
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
}

void X11ScreenTest::screenThatShrinksIsTaken()
{
    OwnScreen screen(kUsual);
    X11Pictures pictures = PicturesOf(screen, 0xffffff, 2, 2);
    QVERIFY2(pictures.IsOpen(), "no X server");
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
    screen.Resize(160, 100);
    Outcome outcome = pictures.Next();
    for (int looks = 0; outcome == Outcome::Waiting && looks < 5; ++looks) {
        outcome = pictures.Next();
    }
    QCOMPARE(outcome, Outcome::Taken);
    QCOMPARE(pictures.At(150, 90), int{kWhite});
    QCOMPARE(pictures.At(170, 90), int{kBlack});
    QVERIFY2(pictures.BecomesStill(), "each picture counts as a new one");
}

// It refuses the picture, and says nothing more.
void X11ScreenTest::serverThatStopsAfterShrinkingIsNotWaitedFor()
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
    Outcome outcome = pictures.Next();
    for (int looks = 0; outcome == Outcome::Waiting && looks < 5; ++looks) {
        outcome = pictures.Next();
    }
    QCOMPARE(outcome, Outcome::Taken);
    QCOMPARE(pictures.At(150, 90), int{kWhite});
    QCOMPARE(pictures.At(170, 90), int{kBlack});
}

void X11ScreenTest::screenThatGoesIsLost()
{
    OwnScreen screen(kUsual);
    QVERIFY2(screen.Good(), "no X server");
    X11Pictures pictures(screen);
    QVERIFY(pictures.IsOpen() && pictures.BecomesStill());
    screen.Kill();
    QCOMPARE(pictures.Next(), Outcome::Lost);
}

void X11ScreenTest::noPicturesWithoutAScreen()
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

QTEST_GUILESS_MAIN(X11ScreenTest)
#include "x11_screen_test.moc"
