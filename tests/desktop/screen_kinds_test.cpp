// Records virtual screens of all kinds with `tool` alone: several monitors, other pixels, sizes
// that change.
#include "tests/support/grabbed_pictures.h"
#include "tests/support/own_screen.h"
#include "tests/support/recording_file.h"
#include "tests/support/screen_recording.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

class ScreenKindsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void oneMonitorOfTwoIsRecordedAlone();
    void everyMonitorIsRecordedByItsNumber();
    void screenThatSharesNoMemoryIsRecorded();
    void screenOfTenBitColoursIsRecorded_data();
    void screenOfTenBitColoursIsRecorded();
    void screenOfOtherPixelsIsGrabbedByFfmpeg();
    void otherColoursThanTheUsualAreRecorded();
    void screenThatBecomesSmallerIsRecordedOn();

private:
    QString Path(const QString& name = "recording.mp4") const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ScreenKindsTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void ScreenKindsTest::oneMonitorOfTwoIsRecordedAlone()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(0, 10, 10);
    constexpr int width = 301; // yuv420p has no odd sizes: a column and a row are left out
    constexpr int height = 203;
    QVERIFY2(screen.AddMonitor(250, 150, width, height), "no second monitor");
    screen.Paint(250, 150, width, height, kGround);
    ScreenRecording recording(screen, Path()); // the server lists added monitors first
    QVERIFY2(recording.WaitForPictures(10), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    const RecordingFile file = ReadRecording(Path());
    QCOMPARE(file.fault, QString());
    QCOMPARE(file.pictureTracks, QStringList{"h264 yuv420p 300x202"});
    const QByteArray picture = Decoded(Path()).right(qsizetype{3} * 300 * 202);
    for (qsizetype at = 0; at < picture.size(); at += 3) {
        QVERIFY2(IsColour(picture, at / 3, kGround),
                 qPrintable(QString("another colour at %1, %2").arg(at / 3 % 300).arg(at / 900)));
    }
}

void ScreenKindsTest::everyMonitorIsRecordedByItsNumber()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    QVERIFY2(screen.AddMonitor(250, 150, 300, 200), "no second monitor");
    const QStringList sizes = {"h264 yuv420p 300x200", "h264 yuv420p 640x480"};
    for (int number = 0; number < 2; ++number) {
        ScreenRecording recording(screen, Path(QString("%1.mp4").arg(number)), "yuv420p",
                                  QString::number(number));
        QVERIFY2(recording.WaitForPictures(3), qPrintable(recording.Text()));
        QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
        QCOMPARE(ReadRecording(recording.File()).pictureTracks, QStringList{sizes[number]});
    }
    ScreenRecording none(screen, Path("none.mp4"), "yuv420p", "2");
    QVERIFY2(none.WaitForEnd(), "a screen is recorded that is not there");
    QVERIFY2(none.Text().contains("there is no screen 2, the display has 2"),
             qPrintable(none.Text()));
}

// As over a network.
void ScreenKindsTest::screenThatSharesNoMemoryIsRecorded()
{
    OwnScreen screen({"-screen", "0", kSize, "-extension", "MIT-SHM"});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(kGround, 300, 200);
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(30), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).fault, QString());
    const QByteArray picture = LastPicture(Path());
    QVERIFY2(IsColour(picture, 20, 20, kGround), "another colour in the upper left");
    QVERIFY2(IsColour(picture, kWidth - 20, kHeight - 20, kGround), "and in the lower right");
}

void ScreenKindsTest::screenOfTenBitColoursIsRecorded_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("in shared memory") << QStringList();
    QTest::newRow("in the server's answers") << QStringList{"-extension", "MIT-SHM"};
}

// ffmpeg's own grabber does not support such pixels.
void ScreenKindsTest::screenOfTenBitColoursIsRecorded()
{
    QFETCH(QStringList, options);
    OwnScreen screen(QStringList{"-screen", "0", "640x480x30"} + options);
    QVERIFY2(screen.Good(), "no X server");
    constexpr int mouseX = 600;
    constexpr int mouseY = 400;
    screen.ShowColour(kGround, mouseX, mouseY);
    const QList<uint32_t> colours = {0xff0000, 0x00ff00, 0x0000ff, 0xffffff, 0, 0x804020, 0x7f7f7f};
    constexpr int width = 64;
    for (qsizetype i = 0; i < colours.size(); ++i) {
        screen.Paint(static_cast<int>(i) * width, 0, width, kHeight, colours[i]);
    }
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(30), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).fault, QString());
    const QByteArray picture = LastPicture(Path());
    QCOMPARE(picture.size(), qsizetype{3} * kWidth * kHeight);
    for (qsizetype i = 0; i < colours.size(); ++i) {
        for (const int y : {20, kHeight / 2, kHeight - 20}) {
            const int x = static_cast<int>(i) * width + width / 2;
            QVERIFY2(IsColour(picture, x, y, colours[i]),
                     qPrintable(
                         QString("%1, not %2, at %3, %4")
                             .arg(QString(picture.mid((qsizetype{y} * kWidth + x) * 3, 3).toHex()),
                                  QString::number(colours[i], 16))
                             .arg(x)
                             .arg(y)));
        }
    }
    QVERIFY2(IsColour(picture, kWidth - 20, 20, kGround), "another colour on the right");
    bool mouse = false;
    for (int i = 0; i < 16; ++i) {
        mouse = mouse || !IsColour(picture, mouseX + i / 2, mouseY + i, kGround);
    }
    QVERIFY2(mouse, "no cursor");
}

void ScreenKindsTest::screenOfOtherPixelsIsGrabbedByFfmpeg()
{
    OwnScreen screen({"-screen", "0", "640x480x16"});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QVERIFY2(recording.Text().contains("Input #0, x11grab"), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).fault, QString());
}

void ScreenKindsTest::otherColoursThanTheUsualAreRecorded()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path(), "yuv444p");
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).pictureTracks, QStringList{"h264 yuv444p 640x480"});
}

void ScreenKindsTest::screenThatBecomesSmallerIsRecordedOn()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(kGround, 10, 10);
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(10), qPrintable(recording.Text()));
    constexpr int width = 320;
    constexpr int height = 240;
    screen.Resize(width, height);
    QVERIFY2(recording.WaitForMore(10), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    const RecordingFile file = ReadRecording(Path());
    QCOMPARE(file.fault, QString());
    QCOMPARE(file.pictureTracks, QStringList{"h264 yuv420p 640x480"});
    const QByteArray picture = LastPicture(Path());
    QVERIFY2(IsColour(picture, width - 20, height - 20, kGround), "what is left is not shown");
    QVERIFY2(IsColour(picture, width + 20, height - 20, 0), "not black beside the screen");
    QVERIFY2(IsColour(picture, kWidth - 20, kHeight - 20, 0), "not black below the screen");
}

QTEST_GUILESS_MAIN(ScreenKindsTest)
#include "screen_kinds_test.moc"
