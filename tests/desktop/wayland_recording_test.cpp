// Recordings in a Wayland session, by `tool`. As root, these are recordings of another user's
// session, as after pkexec.
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/virtual_seat.h"
#include "tests/support/wayland_takes.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <algorithm>
#include <memory>

class WaylandRecordingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void movingPictureAndBothSoundsAreRecorded();
    void stillScreenIsRecordedAtItsFullLength();
    void pointerIsRecorded();
    void keyAtOnceEndsTheRecordingAtOnce();
    void compositorThatIsKilledLeavesARecording();
    void ffmpegIsNotLeftToGrabABlackScreen();
    void sessionsXServerIsNotTakenForTheScreen();

private:
    std::unique_ptr<WaylandTakes> m_takes;
};

void WaylandRecordingTest::init()
{
    m_takes = std::make_unique<WaylandTakes>();
    QVERIFY2(OutputAreas().size() == 2, "no session with two outputs");
}

void WaylandRecordingTest::cleanup()
{
    m_takes.reset();
    QVERIFY2(RestoreOutputs(), "the outputs stay as they are");
}

void WaylandRecordingTest::movingPictureAndBothSoundsAreRecorded()
{
    TestPatternProcess pattern;
    QVERIFY2(pattern.IsReady(), "no test pattern");
    const auto take = m_takes->Begin("0:0 0:1");
    QVERIFY(m_takes->WaitForSeconds(*take, 3));
    QCOMPARE(m_takes->Finish(*take), QString());
    const auto report = PatternReport(take->Path(), 60000, {"--skip", "0.5"});
    const QStringList tones = report["tones"].split(' ');
    QVERIFY2(tones.contains(QString::number(TestPatternProcess::kSpeakerTone)) &&
                 tones.contains(QString::number(TestPatternProcess::kMicrophoneTone)),
             qPrintable("heard: " + report["tones"]));
    QCOMPARE(report["missing_frames"], QString("0"));
    // Beside other tests; benchmarks count exactly.
    QVERIFY2(report["distinct_share"].toDouble() >= 50,
             qPrintable(report["distinct_share"] + " % of the frames differ"));
}

void WaylandRecordingTest::stillScreenIsRecordedAtItsFullLength()
{
    QVERIFY2(ShowColour(0, "#0000ff", kBlue), "no coloured background");
    QElapsedTimer timer;
    timer.start();
    const auto take = m_takes->Begin("0");
    QVERIFY2(take->Taken() >= 0, "no picture");
    QVERIFY(m_takes->WaitForSeconds(*take, 2));
    const double most = static_cast<double>(timer.elapsed()) / 1000 + 0.3;
    QCOMPARE(m_takes->Finish(*take), QString());
    const double seconds = ReadRecording(take->Path()).seconds;
    QVERIFY2(seconds >= 2 && seconds <= most,
             qPrintable(QString("%1 s in the file, %2 s at most").arg(seconds).arg(most)));
}

// It moves over a still screen: that is a change too.
void WaylandRecordingTest::pointerIsRecorded()
{
    VirtualSeat seat;
    QVERIFY2(seat.Good(), "no virtual pointer");
    QVERIFY2(ShowColour(0, "#ff0000", kRed), "no coloured background");
    const QSize layout(2 * kOutputWidth, kOutputHeight);
    seat.Move({kOutputWidth + 10, 10}, layout);
    const auto take = m_takes->Begin("0");
    QVERIFY(m_takes->WaitForSeconds(*take, 0.5));
    seat.Move({kOutputWidth / 2, kOutputHeight / 2}, layout);
    QVERIFY(m_takes->WaitForSeconds(*take, 0.7));
    QCOMPARE(m_takes->Finish(*take), QString());
    // Black, white or another colour: the difference of the brightest and darkest pixel there.
    const auto contrast = [&](const QStringList& seek) {
        const QByteArray pixels =
            RunProgram("ffmpeg", QStringList{"-v", "error"} + seek +
                                     QStringList{"-i", take->Path(), "-frames:v", "1", "-vf",
                                                 "crop=40:40:310:190", "-f", "rawvideo", "-pix_fmt",
                                                 "gray", "-"})
                .output;
        const auto [least, most] =
            std::minmax_element(pixels.begin(), pixels.end(), [](char one, char other) {
                return static_cast<uchar>(one) < static_cast<uchar>(other);
            });
        return pixels.isEmpty() ? -1 : static_cast<uchar>(*most) - static_cast<uchar>(*least);
    };
    const int before = contrast({});
    const int after = contrast({"-sseof", "-0.2"});
    QVERIFY2(before >= 0 && before < 20, qPrintable(QString("contrast %1 without").arg(before)));
    QVERIFY2(after > 50, qPrintable(QString("contrast %1 with the pointer").arg(after)));
}

void WaylandRecordingTest::keyAtOnceEndsTheRecordingAtOnce()
{
    Take take(m_takes->Path("short.mp4"), "0:0");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(m_takes->Finish(take), QString());
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString("took %1 ms").arg(timer.elapsed())));
}

// In a session of its own.
void WaylandRecordingTest::compositorThatIsKilledLeavesARecording()
{
    const QString file = m_takes->Path("killed.mp4");
    const QString script = "\"$@\" 2>\"$0.log\" <\"$0.keys\" & tool=$!; exec 9>\"$0.keys\"; "
                           "until [ -s \"$0\" ]; do kill -0 $tool || exit 9; sleep 0.1; done; "
                           "kill -KILL $LUMENFOLD_COMPOSITOR; wait $tool; echo ended with $?";
    QCOMPARE(RunProgram("mkfifo", {file + ".keys"}).code, 0);
    const Outcome session = RunProgram(
        WAYLAND_DESKTOP, QStringList{"--no-sound", "sh", "-c", script, file, TOOL_PROGRAM} +
                             RecorderCommand({"0"}, file));
    QVERIFY2(session.output.contains("ended with 0"),
             session.output + session.error + Content(file + ".log"));
    const RecordingFile recording = ReadRecording(file);
    QCOMPARE(recording.fault, QString());
    QCOMPARE(recording.pictureTracks, QStringList("h264 yuv420p 1280x800"));
}

void WaylandRecordingTest::ffmpegIsNotLeftToGrabABlackScreen()
{
    Take take(m_takes->Path("none.mp4"), "0", {}, "yuv444p");
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 1);
    QVERIFY2(take.Text().contains("Wayland") && take.Text().count('\n') == 1, take.Text());
    QVERIFY2(!QFile::exists(take.Path()), "there is a file");
}

// Its X server knows the session's monitors, but shows them black.
void WaylandRecordingTest::sessionsXServerIsNotTakenForTheScreen()
{
    Take take(m_takes->Path("none.mp4"), "0", {"WAYLAND_DISPLAY="});
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 1);
    QVERIFY2(take.Text().contains("is part of a Wayland session"), take.Text());
    QVERIFY2(!QFile::exists(take.Path()), "there is a file");
}

QTEST_GUILESS_MAIN(WaylandRecordingTest)
#include "wayland_recording_test.moc"
