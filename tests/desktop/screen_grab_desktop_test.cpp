// Records virtual screens with `tool` alone: what is in the picture, and what happens to the file
// when something disappears.
#include "tests/support/desktop.h"
#include "tests/support/own_screen.h"
#include "tests/support/recording_file.h"
#include "tests/support/screen_recording.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <memory>

namespace {

constexpr auto kSize = "640x480x24";
constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr uint32_t kGround = 0x4080c0;

// All frames, three bytes per pixel.
QByteArray Decoded(const QString& file)
{
    return RunProgram("ffmpeg",
                      {"-v", "error", "-i", file, "-f", "rawvideo", "-pix_fmt", "rgb24", "-"})
        .output;
}

QByteArray LastPicture(const QString& file)
{
    return Decoded(file).right(qsizetype{3} * kWidth * kHeight);
}

// How similar a recording is to a picture, over red, green and blue: 1 is identical, 0 unrelated.
double Likeness(const QString& recording, const QString& picture)
{
    const Outcome compared = RunProgram(
        "ffmpeg", {"-hide_banner", "-i", recording, "-i", picture, "-lavfi",
                   "[0]format=gbrp[a];[1]format=gbrp,loop=-1:size=1[b];[a][b]ssim=shortest=1", "-f",
                   "null", "-"});
    return QRegularExpression("SSIM .*All:([\\d.]+)")
        .match(QString::fromUtf8(compared.error))
        .captured(1)
        .toDouble();
}

bool IsColour(const QByteArray& picture, qsizetype pixel, uint32_t colour)
{
    for (int channel = 0; channel < 3; ++channel) {
        const int shown = static_cast<uint8_t>(picture[pixel * 3 + channel]);
        const int meant = static_cast<int>(colour >> (16 - 8 * channel) & 0xff);
        if (std::abs(shown - meant) > 8) {
            return false;
        }
    }
    return true;
}

bool IsColour(const QByteArray& picture, int x, int y, uint32_t colour)
{
    return IsColour(picture, qsizetype{y} * kWidth + x, colour);
}

} // namespace

class ScreenGrabDesktopTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void pictureIsAsGoodAsThatOfTheUsualGrab();
    void mouseCursorIsInThePicture_data();
    void mouseCursorIsInThePicture();
    void everySmallChangeIsInTheVideo();
    void oneMonitorOfTwoIsRecordedAlone();
    void everyMonitorIsRecordedByItsNumber();
    void stalledRecordingHasNoGap();
    void screenThatSharesNoMemoryIsRecorded();
    void screenOfTenBitColoursIsRecorded_data();
    void screenOfTenBitColoursIsRecorded();
    void screenOfOtherPixelsIsGrabbedByFfmpeg();
    void otherColoursThanTheUsualAreRecorded();
    void screenThatGoesLeavesAFinishedFile_data();
    void screenThatGoesLeavesAFinishedFile();
    void terminatedRecordingIsFinishedAtOnce();
    void killedToolLeavesAFinishedFile_data();
    void killedToolLeavesAFinishedFile();
    void screenThatBecomesSmallerIsRecordedOn();

private:
    QString Path(const QString& name = "recording.mp4") const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ScreenGrabDesktopTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void ScreenGrabDesktopTest::pictureIsAsGoodAsThatOfTheUsualGrab()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowPicture();
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(30), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QVERIFY2(recording.Text().contains("Input #0, rawvideo"), qPrintable(recording.Text()));
    const QStringList grab{"-v",    "error",       "-f",      "x11grab", "-framerate",
                           "29.97", "-video_size", "640x480", "-i",      screen.Name()};
    // With a sync sample where the recording has one too, because it is less similar than the
    // frames after it.
    const Outcome usual =
        RunProgram("ffmpeg", grab + QStringList{"-frames:v", "30", "-force_key_frames",
                                                "expr:eq(n,1)", "-preset", "ultrafast", "-pix_fmt",
                                                "yuv420p", Path("usual.mp4")});
    QVERIFY2(usual.code == 0, usual.error);
    const Outcome shown =
        RunProgram("ffmpeg", grab + QStringList{"-frames:v", "1", Path("screen.png")});
    QVERIFY2(shown.code == 0, shown.error);
    // Compared with the screen, because the two filter the colour planes differently.
    const double own = Likeness(Path(), Path("screen.png"));
    const double theirs = Likeness(Path("usual.mp4"), Path("screen.png"));
    QVERIFY2(theirs > 0.5, qPrintable(QString("the usual grab is not like it: %1").arg(theirs)));
    QVERIFY2(
        own >= theirs - 0.001,
        qPrintable(QString("like the screen by %1, the usual grab by %2").arg(own).arg(theirs)));
}

void ScreenGrabDesktopTest::mouseCursorIsInThePicture_data()
{
    QTest::addColumn<int>("x");
    QTest::addColumn<int>("y");
    QTest::newRow("in the middle") << 300 << 200;
    QTest::newRow("half over the edge") << kWidth - 4 << kHeight - 4;
    QTest::newRow("in the corner") << 0 << 0;
}

void ScreenGrabDesktopTest::mouseCursorIsInThePicture()
{
    QFETCH(int, x);
    QFETCH(int, y);
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(kGround, x, y);
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    const QByteArray picture = LastPicture(Path());
    QCOMPARE(picture.size(), qsizetype{3} * kWidth * kHeight);
    // The encoder works in blocks of 16 and blurs across them.
    constexpr int reach = 40;
    bool seen = false;
    for (int row = 0; row < kHeight; ++row) {
        for (int column = 0; column < kWidth; ++column) {
            const bool near = std::abs(row - y) < reach && std::abs(column - x) < reach;
            const bool ground = IsColour(picture, column, row, kGround);
            seen = seen || (near && !ground);
            QVERIFY2(ground || near,
                     qPrintable(QString("something at %1, %2").arg(column).arg(row)));
        }
    }
    QVERIFY2(seen, "no cursor");
}

// On a screen that is still otherwise: a new square now and then.
void ScreenGrabDesktopTest::everySmallChangeIsInTheVideo()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowColour(0, 620, 460);
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    constexpr int squares = 20;
    const auto place = [](int square) { return 16 + square % 5 * 128; };
    const auto row = [](int square) { return 16 + square / 5 * 112; };
    for (int square = 0; square < squares; ++square) {
        screen.Paint(place(square), row(square), 16, 16, 0xffffff);
        QVERIFY2(recording.WaitForMore(2), qPrintable(recording.Text()));
    }
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    const QByteArray frames = Decoded(Path());
    constexpr qsizetype frameBytes = qsizetype{3} * kWidth * kHeight;
    qsizetype frame = 0;
    for (int square = 0; square < squares; ++square) {
        const auto isShown = [&](int which) {
            const qsizetype pixel = qsizetype{row(which) + 8} * kWidth + place(which) + 8;
            return static_cast<uint8_t>(frames[frame * frameBytes + pixel * 3]) > 128;
        };
        while ((frame + 1) * frameBytes < frames.size() && !isShown(square)) {
            ++frame;
        }
        QVERIFY2(isShown(square), qPrintable(QString("square %1 is never shown").arg(square)));
        QVERIFY2(square + 1 == squares || !isShown(square + 1),
                 qPrintable(QString("square %1 is shown too late").arg(square)));
    }
}

void ScreenGrabDesktopTest::oneMonitorOfTwoIsRecordedAlone()
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

void ScreenGrabDesktopTest::everyMonitorIsRecordedByItsNumber()
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

// As on a busy machine: frames that could not be grabbed repeat the previous one for that time.
void ScreenGrabDesktopTest::stalledRecordingHasNoGap()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(15), qPrintable(recording.Text()));
    QElapsedTimer recorded;
    recorded.start();
    recording.Signal(SIGSTOP);
    constexpr int stalledMs = 2000;
    const QDeadlineTimer stalled(stalledMs);
    QTRY_VERIFY(stalled.hasExpired());
    recording.Signal(SIGCONT);
    QVERIFY2(recording.WaitForPictures(15 + 60 + 15), qPrintable(recording.Text()));
    const double least = static_cast<double>(recorded.elapsed()) / 1000 + (15 - 1) / 29.97;
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    const RecordingFile file = ReadRecording(Path());
    QCOMPARE(file.fault, QString());
    QVERIFY2(file.seconds >= least, qPrintable(QString("%1 s of %2").arg(file.seconds).arg(least)));
}

// As over a network.
void ScreenGrabDesktopTest::screenThatSharesNoMemoryIsRecorded()
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

void ScreenGrabDesktopTest::screenOfTenBitColoursIsRecorded_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("in shared memory") << QStringList();
    QTest::newRow("in the server's answers") << QStringList{"-extension", "MIT-SHM"};
}

// ffmpeg's own grabber does not support such pixels.
void ScreenGrabDesktopTest::screenOfTenBitColoursIsRecorded()
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

void ScreenGrabDesktopTest::screenOfOtherPixelsIsGrabbedByFfmpeg()
{
    OwnScreen screen({"-screen", "0", "640x480x16"});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QVERIFY2(recording.Text().contains("Input #0, x11grab"), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).fault, QString());
}

void ScreenGrabDesktopTest::otherColoursThanTheUsualAreRecorded()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path(), "yuv444p");
    QVERIFY2(recording.WaitForPictures(5), qPrintable(recording.Text()));
    QVERIFY2(recording.Quit(), qPrintable(recording.Text()));
    QCOMPARE(ReadRecording(Path()).pictureTracks, QStringList{"h264 yuv444p 640x480"});
}

void ScreenGrabDesktopTest::screenThatGoesLeavesAFinishedFile_data()
{
    QTest::addColumn<QString>("devices");
    QTest::newRow("without sound") << "0";
    QTest::newRow("with sound, which does not go") << "0:0";
}

void ScreenGrabDesktopTest::screenThatGoesLeavesAFinishedFile()
{
    QFETCH(QString, devices);
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    screen.ShowPicture();
    ScreenRecording recording(screen, Path(), "yuv420p", devices);
    QVERIFY2(recording.WaitForPictures(30), qPrintable(recording.Text()));
    screen.Kill();
    QVERIFY2(recording.WaitForEnd(), "the recording goes on without a screen");
    const RecordingFile file = ReadRecording(Path());
    QCOMPARE(file.fault, QString());
    QCOMPARE(file.soundTracks.size(), devices == "0" ? 0 : 1);
    QVERIFY2(file.seconds >= 0.9, qPrintable(QString("%1 s").arg(file.seconds)));
}

void ScreenGrabDesktopTest::terminatedRecordingIsFinishedAtOnce()
{
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path());
    QVERIFY2(recording.WaitForPictures(30), qPrintable(recording.Text()));
    QElapsedTimer time;
    time.start();
    recording.Signal(SIGTERM);
    QVERIFY2(recording.WaitForEnd(), "the recording goes on");
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString("%1 ms").arg(time.elapsed())));
    QCOMPARE(ReadRecording(Path()).fault, QString());
}

void ScreenGrabDesktopTest::killedToolLeavesAFinishedFile_data()
{
    QTest::addColumn<QString>("colours");
    QTest::addColumn<int>("pictures");
    QTest::addColumn<double>("seconds"); // of them that are kept at least
    QTest::newRow("whose pictures end with it") << "yuv420p" << 30 << 0.9;
    // Two seconds may be lost on a busy machine.
    QTest::newRow("whose ffmpeg grabs the screen") << "yuv444p" << 75 << 0.5;
}

void ScreenGrabDesktopTest::killedToolLeavesAFinishedFile()
{
    QFETCH(QString, colours);
    QFETCH(int, pictures);
    QFETCH(double, seconds);
    OwnScreen screen({"-screen", "0", kSize});
    QVERIFY2(screen.Good(), "no X server");
    ScreenRecording recording(screen, Path(), colours);
    QVERIFY2(recording.WaitForPictures(pictures), qPrintable(recording.Text()));
    const pid_t ffmpeg = recording.Ffmpeg();
    QVERIFY(ffmpeg > 0);
    recording.Signal(SIGKILL);
    QVERIFY2(WaitUntil([&] { return !IsAlive(ffmpeg); }), "ffmpeg goes on");
    const RecordingFile file = ReadRecording(Path());
    QCOMPARE(file.fault, QString());
    QVERIFY2(file.seconds >= seconds, qPrintable(QString("%1 s").arg(file.seconds)));
}

void ScreenGrabDesktopTest::screenThatBecomesSmallerIsRecordedOn()
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

QTEST_GUILESS_MAIN(ScreenGrabDesktopTest)
#include "screen_grab_desktop_test.moc"
