// Recordings in a Wayland session, by `tool`: of each output, turned, scaled, resized and taken
// away. As root, these are recordings of another user's session, as after pkexec.
#include "tests/support/desktop.h"
#include "tests/support/recording_file.h"
#include "tests/support/shown_output.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_take.h"
#include "tests/support/virtual_seat.h"
#include "tool/screen/screen.h"

#include <QColor>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <array>
#include <memory>

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 400;
constexpr int kRed = 82; // as luma, like those below
constexpr int kGreen = 145;
constexpr int kBlue = 41;
constexpr int kWhite = 235;
constexpr int kBlack = 16;

bool AreAlike(const QList<int>& one, const QList<int>& other)
{
    return one.size() == other.size() &&
           std::equal(one.begin(), one.end(), other.begin(),
                      [](int a, int b) { return std::abs(a - b) <= 6; });
}

// Fills the output's background. Returns false if that is not seen.
bool Show(int output, const QStringList& background, const QList<int>& lumas)
{
    const QString name = QString("HEADLESS-%1").arg(output + 1);
    return TellSway(QStringList{"output", name, "bg"} + background) &&
           WaitUntil([&] { return AreAlike(ShownLumas(static_cast<size_t>(output)), lumas); });
}

bool ShowColour(int output, const QColor& colour, int luma)
{
    return Show(output, {colour.name(), "solid_color"}, {luma, luma, luma, luma});
}

// The brightness in the middle of each quarter of the recording's last frame.
QList<int> LastLumas(const QString& file)
{
    const Outcome probe =
        RunProgram("ffprobe", {"-v", "error", "-select_streams", "v", "-show_entries",
                               "stream=width,height", "-of", "csv=p=0", file});
    const QList<QByteArray> size = probe.output.trimmed().split(',');
    const qsizetype width = size.value(0).toInt();
    const qsizetype height = size.value(1).toInt();
    const Outcome decoded = RunProgram("ffmpeg", {"-v", "error", "-sseof", "-0.5", "-i", file, "-f",
                                                  "rawvideo", "-pix_fmt", "yuv420p", "-"});
    const QByteArray last =
        decoded.output.last(std::min(decoded.output.size(), width * height * 3 / 2));
    if (last.isEmpty()) {
        return {};
    }
    const auto luma = [&](qsizetype x, qsizetype y) {
        return static_cast<int>(
            static_cast<uchar>(last.at(y * height / 4 * width + x * width / 4)));
    };
    return {luma(1, 1), luma(3, 1), luma(1, 3), luma(3, 3)};
}

QByteArray Told(const QList<int>& lumas)
{
    QByteArray text = "brightness";
    for (const int luma : lumas) {
        text += ' ' + QByteArray::number(luma);
    }
    return text;
}

} // namespace

class WaylandRecordingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    static void listIsQuickAndAsksNobody();
    void eachOutputIsRecordedByItsNumber();
    void movingPictureAndBothSoundsAreRecorded();
    void turnedOutputIsRecordedUpright_data();
    void turnedOutputIsRecordedUpright();
    void scaledOutputIsRecordedInItsFullPixels();
    void outputThatChangesItsSizeKeepsTheFilesSize();
    void stillScreenIsRecordedAtItsFullLength();
    void pointerIsRecorded();
    void keyAtOnceEndsTheRecordingAtOnce();
    void outputThatIsSwitchedOffAndOnIsRecordedOn();
    void compositorThatIsKilledLeavesARecording();
    void ffmpegIsNotLeftToGrabABlackScreen();

private:
    // Records until `Finish`, after the first content.
    std::unique_ptr<Take> Begin(const QString& devices);
    static bool WaitForSeconds(const Take& take, double seconds);
    QString Finish(Take& take);

    std::unique_ptr<QTemporaryDir> m_folder;
    int m_nTakes = 0;
};

void WaylandRecordingTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY2(OutputAreas().size() == 2, "no session with two outputs");
}

void WaylandRecordingTest::cleanup()
{
    TellSway({"output", "HEADLESS-1", "mode", "640x400@60Hz", "scale", "1", "transform", "normal"});
    QVERIFY(WaitUntil([] {
        return OutputAreas() ==
               std::vector<tool::Rectangle>{{0, 0, kWidth, kHeight}, {kWidth, 0, kWidth, kHeight}};
    }));
}

std::unique_ptr<Take> WaylandRecordingTest::Begin(const QString& devices)
{
    auto take =
        std::make_unique<Take>(m_folder->filePath(QString("%1.mp4").arg(++m_nTakes)), devices);
    if (!WaitUntil([&] { return take->HasPicture() || take->HasEnded(); }) || take->HasEnded()) {
        QTest::qFail("no recording: " + take->Text(), __FILE__, __LINE__);
    }
    return take;
}

// The seconds are those from now.
bool WaylandRecordingTest::WaitForSeconds(const Take& take, double seconds)
{
    const double before = std::max(take.Taken(), 0.0);
    return WaitUntil([&] { return take.HasEnded() || take.Taken() >= before + seconds; });
}

// Returns the reason why it is no recording, or "".
QString WaylandRecordingTest::Finish(Take& take)
{
    take.Type("q\r\n");
    if (!take.WaitForEnd() || take.ExitCode() != 0) {
        return "ended with " + QString::number(take.ExitCode()) + ": " + take.Text();
    }
    return ReadRecording(take.Path()).fault;
}

void WaylandRecordingTest::listIsQuickAndAsksNobody()
{
    qint64 fastest = 1000000;
    for (int i = 0; i < 10; ++i) {
        QElapsedTimer timer;
        timer.start();
        const tool::Screens screens = tool::ReadScreens();
        fastest = std::min(fastest, timer.elapsed());
        QCOMPARE(screens.areas.size(), 2U);
    }
    QVERIFY2(fastest <= 50, qPrintable(QString("takes %1 ms").arg(fastest)));
    const QByteArray loaded = Content("/proc/self/maps");
    QVERIFY(loaded.contains("libwayland-client"));
    QVERIFY2(!loaded.contains("libpipewire"), "a list loads PipeWire");
    const Outcome list =
        RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", " "});
    QVERIFY2(list.error.contains("[0] Capture screen 0\n") &&
                 list.error.contains("[1] Capture screen 1\n") &&
                 list.error.contains("[1] Computer sounds (Speaker)\n"),
             list.error);
}

void WaylandRecordingTest::eachOutputIsRecordedByItsNumber()
{
    QVERIFY2(ShowColour(0, Qt::red, kRed) && ShowColour(1, Qt::blue, kBlue),
             "no coloured backgrounds");
    const auto first = Begin("0");
    const auto second = Begin("1");
    QVERIFY(WaitForSeconds(*second, 0.5));
    QCOMPARE(Finish(*first), QString());
    QCOMPARE(Finish(*second), QString());
    QCOMPARE(ReadRecording(first->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    const QList<int> red = LastLumas(first->Path());
    const QList<int> blue = LastLumas(second->Path());
    QVERIFY2(AreAlike(red, {kRed, kRed, kRed, kRed}), Told(red));
    QVERIFY2(AreAlike(blue, {kBlue, kBlue, kBlue, kBlue}), Told(blue));
}

void WaylandRecordingTest::movingPictureAndBothSoundsAreRecorded()
{
    TestPatternProcess pattern;
    QVERIFY2(pattern.IsReady(), "no test pattern");
    const auto take = Begin("0:0 0:1");
    QVERIFY(WaitForSeconds(*take, 3));
    QCOMPARE(Finish(*take), QString());
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

void WaylandRecordingTest::turnedOutputIsRecordedUpright_data()
{
    QTest::addColumn<QString>("transform");
    for (const char* transform : {"90", "180", "270", "flipped", "flipped-90", "flipped-270"}) {
        QTest::newRow(transform) << transform;
    }
}

void WaylandRecordingTest::turnedOutputIsRecordedUpright()
{
    QFETCH(QString, transform);
    const QString file = m_folder->filePath("quarters.png");
    QImage quarters(kWidth, kHeight, QImage::Format_RGB32);
    for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kWidth; ++x) {
            const bool right = x >= kWidth / 2;
            const Qt::GlobalColor upper = right ? Qt::green : Qt::red;
            const Qt::GlobalColor lower = right ? Qt::white : Qt::blue;
            quarters.setPixelColor(x, y, y < kHeight / 2 ? upper : lower);
        }
    }
    QVERIFY(quarters.save(file));
    // For sway's user.
    QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
    QVERIFY(QFile::setPermissions(file, QFile::Permissions(0x6644)));
    QVERIFY(TellSway({"output", "HEADLESS-1", "transform", transform}));
    const QList<int> upright{kRed, kGreen, kBlue, kWhite};
    QVERIFY2(Show(0, {file, "stretch"}, upright), Told(ShownLumas(0)));
    const auto take = Begin("0");
    QVERIFY(WaitForSeconds(*take, 0.1));
    QCOMPARE(Finish(*take), QString());
    const bool sideways = transform.endsWith("90") || transform.endsWith("270");
    QCOMPARE(ReadRecording(take->Path()).pictureTracks,
             QStringList(sideways ? "h264 yuv420p 400x640" : "h264 yuv420p 640x400"));
    const QList<int> lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, upright), Told(lumas));
}

void WaylandRecordingTest::scaledOutputIsRecordedInItsFullPixels()
{
    QVERIFY(TellSway({"output", "HEADLESS-1", "scale", "1.5"}));
    QVERIFY2(ShowColour(0, Qt::green, kGreen), "no coloured background");
    const auto take = Begin("0");
    QVERIFY(WaitForSeconds(*take, 0.1));
    QCOMPARE(Finish(*take), QString());
    QCOMPARE(ReadRecording(take->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    const QList<int> lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kGreen, kGreen, kGreen, kGreen}), Told(lumas));
}

// What is shown then is scaled to fit, with black beside it.
void WaylandRecordingTest::outputThatChangesItsSizeKeepsTheFilesSize()
{
    QVERIFY2(ShowColour(0, Qt::white, kWhite), "no coloured background");
    const auto take = Begin("0");
    QVERIFY(TellSway({"output", "HEADLESS-1", "mode", "160x400@60Hz"}));
    QVERIFY(WaitUntil([] { return ShownLumas(0) == QList<int>{kWhite, kWhite, kWhite, kWhite}; }));
    QVERIFY(WaitForSeconds(*take, 0.5));
    QCOMPARE(Finish(*take), QString());
    QCOMPARE(ReadRecording(take->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    // The picture is between 240 and 400.
    const QList<int> lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kBlack, kBlack, kBlack, kBlack}), Told(lumas));
    Outcome middle =
        RunProgram("ffmpeg", {"-v", "error", "-sseof", "-0.2", "-i", take->Path(), "-frames:v", "1",
                              "-vf", "crop=140:380:250:10,scale=1:1:flags=area", "-f", "rawvideo",
                              "-pix_fmt", "gray", "-"});
    QVERIFY2(static_cast<uchar>(middle.output.append('\0').at(0)) > 225,
             "nothing is seen in the middle");
}

void WaylandRecordingTest::stillScreenIsRecordedAtItsFullLength()
{
    QVERIFY2(ShowColour(0, Qt::blue, kBlue), "no coloured background");
    QElapsedTimer timer;
    timer.start();
    const auto take = Begin("0");
    QVERIFY2(take->Taken() >= 0, "no picture");
    QVERIFY(WaitForSeconds(*take, 2));
    const double most = static_cast<double>(timer.elapsed()) / 1000 + 0.3;
    QCOMPARE(Finish(*take), QString());
    const double seconds = ReadRecording(take->Path()).seconds;
    QVERIFY2(seconds >= 2 && seconds <= most,
             qPrintable(QString("%1 s in the file, %2 s at most").arg(seconds).arg(most)));
}

// It moves over a still screen: that is a change too.
void WaylandRecordingTest::pointerIsRecorded()
{
    VirtualSeat seat;
    QVERIFY2(seat.Good(), "no virtual pointer");
    QVERIFY2(ShowColour(0, Qt::red, kRed), "no coloured background");
    const QSize layout(2 * kWidth, kHeight);
    seat.Move({kWidth + 10, 10}, layout);
    const auto take = Begin("0");
    QVERIFY(WaitForSeconds(*take, 0.5));
    seat.Move({kWidth / 2, kHeight / 2}, layout);
    QVERIFY(WaitForSeconds(*take, 0.7));
    QCOMPARE(Finish(*take), QString());
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
    Take take(m_folder->filePath("short.mp4"), "0:0");
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(Finish(take), QString());
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString("took %1 ms").arg(timer.elapsed())));
}

// As a monitor that sleeps: the last picture stays until it wakes.
void WaylandRecordingTest::outputThatIsSwitchedOffAndOnIsRecordedOn()
{
    QVERIFY2(ShowColour(1, Qt::red, kRed), "no coloured background");
    const auto take = Begin("1");
    QVERIFY(TellSway({"output", "HEADLESS-2", "dpms", "off"}));
    const bool recorded = WaitForSeconds(*take, 0.5);
    QVERIFY(TellSway({"output", "HEADLESS-2", "dpms", "on"}));
    QVERIFY(recorded);
    QVERIFY2(!take->HasEnded(), take->Text());
    QVERIFY2(ShowColour(1, Qt::blue, kBlue), "no coloured background");
    QVERIFY(WaitForSeconds(*take, 0.5));
    QCOMPARE(Finish(*take), QString());
    const QList<int> lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kBlue, kBlue, kBlue, kBlue}), Told(lumas));
}

// In a session of its own.
void WaylandRecordingTest::compositorThatIsKilledLeavesARecording()
{
    const QString file = m_folder->filePath("killed.mp4");
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
    Take take(m_folder->filePath("none.mp4"), "0", {}, "yuv444p");
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 1);
    QVERIFY2(take.Text().contains("Wayland") && take.Text().count('\n') == 1, take.Text());
    QVERIFY2(!QFile::exists(take.Path()), "there is a file");
}

QTEST_GUILESS_MAIN(WaylandRecordingTest)
#include "wayland_recording_test.moc"
