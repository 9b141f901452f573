// Pictures of virtual X screens: when there is a new one, and what it shows.
#include "tests/support/x11_pictures.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

class X11ScreenTest : public QObject
{
    Q_OBJECT

private slots:
    static void stillScreenIsUnchanged();
    static void everySmallChangeIsTaken_data();
    static void everySmallChangeIsTaken();
    static void changeDuringALookIsTakenWithIt();
    static void changeThatIsNotReportedIsTaken_data();
    static void changeThatIsNotReportedIsTaken();
    static void screenThatNeverRestsIsTakenEachTime();
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

QTEST_GUILESS_MAIN(X11ScreenTest)
#include "x11_screen_test.moc"
