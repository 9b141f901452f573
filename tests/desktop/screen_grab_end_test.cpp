// Records virtual screens with `tool` alone: what happens to the file when something stalls or
// disappears.
#include "tests/support/desktop.h"
#include "tests/support/own_screen.h"
#include "tests/support/recording_file.h"
#include "tests/support/screen_recording.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <memory>

namespace {
const QStringList kUsual{"-screen", "0", "640x480x24"};
} // namespace

class ScreenGrabEndTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void stalledRecordingHasNoGap();
    void screenThatGoesLeavesAFinishedFile_data();
    void screenThatGoesLeavesAFinishedFile();
    void terminatedRecordingIsFinishedAtOnce();
    void killedToolLeavesAFinishedFile_data();
    void killedToolLeavesAFinishedFile();

private:
    QString Path() const { return m_folder->filePath("recording.mp4"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ScreenGrabEndTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

// As on a busy machine: frames that could not be grabbed repeat the previous one for that time.
void ScreenGrabEndTest::stalledRecordingHasNoGap()
{
    OwnScreen screen(kUsual);
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

void ScreenGrabEndTest::screenThatGoesLeavesAFinishedFile_data()
{
    QTest::addColumn<QString>("devices");
    QTest::newRow("without sound") << "0";
    QTest::newRow("with sound, which does not go") << "0:0";
}

void ScreenGrabEndTest::screenThatGoesLeavesAFinishedFile()
{
    QFETCH(QString, devices);
    OwnScreen screen(kUsual);
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

void ScreenGrabEndTest::terminatedRecordingIsFinishedAtOnce()
{
    OwnScreen screen(kUsual);
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

void ScreenGrabEndTest::killedToolLeavesAFinishedFile_data()
{
    QTest::addColumn<QString>("colours");
    QTest::addColumn<int>("pictures");
    QTest::addColumn<double>("seconds"); // of them that are kept at least
    QTest::newRow("whose pictures end with it") << "yuv420p" << 30 << 0.9;
    // Not at the end of a fragment, so that one that is not finished is missed.
    QTest::newRow("whose ffmpeg grabs the screen") << "yuv444p" << 87 << 2.8;
}

void ScreenGrabEndTest::killedToolLeavesAFinishedFile()
{
    QFETCH(QString, colours);
    QFETCH(int, pictures);
    QFETCH(double, seconds);
    OwnScreen screen(kUsual);
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

QTEST_GUILESS_MAIN(ScreenGrabEndTest)
#include "screen_grab_end_test.moc"
