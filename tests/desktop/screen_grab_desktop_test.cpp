// Records virtual screens with `tool` alone: what is in the picture.
#include "tests/support/grabbed_pictures.h"
#include "tests/support/own_screen.h"
#include "tests/support/recording_file.h"
#include "tests/support/screen_recording.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace {

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

QTEST_GUILESS_MAIN(ScreenGrabDesktopTest)
#include "screen_grab_desktop_test.moc"
