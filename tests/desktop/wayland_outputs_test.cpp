// Recordings of the outputs of a Wayland session, by `tool`: of each, turned, scaled, resized and
// switched off.
#include "tests/support/desktop.h"
#include "tests/support/recording_file.h"
#include "tests/support/wayland_takes.h"
#include "tool/screen/screen.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QTest>

#include <algorithm>
#include <memory>

class OutputRecordingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    static void listIsQuickAndAsksNobody();
    void eachOutputIsRecordedByItsNumber();
    static void turnedOutputIsRecordedUpright_data();
    void turnedOutputIsRecordedUpright();
    void scaledOutputIsRecordedInItsFullPixels();
    void outputThatChangesItsSizeKeepsTheFilesSize();
    void outputThatIsSwitchedOffAndOnIsRecordedOn();

private:
    std::unique_ptr<WaylandTakes> m_takes;
};

void OutputRecordingTest::init()
{
    m_takes = std::make_unique<WaylandTakes>();
    QVERIFY2(OutputAreas().size() == 2, "no session with two outputs");
}

void OutputRecordingTest::cleanup()
{
    m_takes.reset();
    QVERIFY2(RestoreOutputs(), "the outputs stay as they are");
}

void OutputRecordingTest::listIsQuickAndAsksNobody()
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

void OutputRecordingTest::eachOutputIsRecordedByItsNumber()
{
    QVERIFY2(ShowColour(0, "#ff0000", kRed) && ShowColour(1, "#0000ff", kBlue),
             "no coloured backgrounds");
    const auto first = m_takes->Begin("0");
    const auto second = m_takes->Begin("1");
    QVERIFY(m_takes->WaitForSeconds(*second, 0.5));
    QCOMPARE(m_takes->Finish(*first), QString());
    QCOMPARE(m_takes->Finish(*second), QString());
    QCOMPARE(ReadRecording(first->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    const Lumas red = LastLumas(first->Path());
    const Lumas blue = LastLumas(second->Path());
    QVERIFY2(AreAlike(red, {kRed, kRed, kRed, kRed}), Told(red));
    QVERIFY2(AreAlike(blue, {kBlue, kBlue, kBlue, kBlue}), Told(blue));
}

void OutputRecordingTest::turnedOutputIsRecordedUpright_data()
{
    QTest::addColumn<QString>("transform");
    for (const char* transform : {"90", "180", "270", "flipped", "flipped-90", "flipped-270"}) {
        QTest::newRow(transform) << transform;
    }
}

void OutputRecordingTest::turnedOutputIsRecordedUpright()
{
    QFETCH(QString, transform);
    const QString file = m_takes->Path("quarters.png");
    QImage quarters(kOutputWidth, kOutputHeight, QImage::Format_RGB32);
    for (int y = 0; y < kOutputHeight; ++y) {
        for (int x = 0; x < kOutputWidth; ++x) {
            const bool right = x >= kOutputWidth / 2;
            const Qt::GlobalColor upper = right ? Qt::green : Qt::red;
            const Qt::GlobalColor lower = right ? Qt::white : Qt::blue;
            quarters.setPixelColor(x, y, y < kOutputHeight / 2 ? upper : lower);
        }
    }
    QVERIFY(quarters.save(file));
    // For sway's user.
    QVERIFY(QFile::setPermissions(m_takes->Folder(), QFile::Permissions(0x7755)));
    QVERIFY(QFile::setPermissions(file, QFile::Permissions(0x6644)));
    QVERIFY(TellSway({"output", "HEADLESS-1", "transform", transform}));
    const Lumas upright{kRed, kGreen, kBlue, kWhite};
    QVERIFY2(Show(0, {file, "stretch"}, upright), Told(ShownLumas(0)));
    const auto take = m_takes->Begin("0");
    QVERIFY(m_takes->WaitForSeconds(*take, 0.1));
    QCOMPARE(m_takes->Finish(*take), QString());
    const bool sideways = transform.endsWith("90") || transform.endsWith("270");
    QCOMPARE(ReadRecording(take->Path()).pictureTracks,
             QStringList(sideways ? "h264 yuv420p 400x640" : "h264 yuv420p 640x400"));
    const Lumas lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, upright), Told(lumas));
}

void OutputRecordingTest::scaledOutputIsRecordedInItsFullPixels()
{
    QVERIFY(TellSway({"output", "HEADLESS-1", "scale", "1.5"}));
    QVERIFY2(ShowColour(0, "#00ff00", kGreen), "no coloured background");
    const auto take = m_takes->Begin("0");
    QVERIFY(m_takes->WaitForSeconds(*take, 0.1));
    QCOMPARE(m_takes->Finish(*take), QString());
    QCOMPARE(ReadRecording(take->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    const Lumas lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kGreen, kGreen, kGreen, kGreen}), Told(lumas));
}

// What is shown then is scaled to fit, with black beside it.
void OutputRecordingTest::outputThatChangesItsSizeKeepsTheFilesSize()
{
    QVERIFY2(ShowColour(0, "#ffffff", kWhite), "no coloured background");
    const auto take = m_takes->Begin("0");
    QVERIFY(TellSway({"output", "HEADLESS-1", "mode", "160x400@60Hz"}));
    QVERIFY(WaitUntil([] { return ShownLumas(0) == Lumas{kWhite, kWhite, kWhite, kWhite}; }));
    QVERIFY(m_takes->WaitForSeconds(*take, 0.5));
    QCOMPARE(m_takes->Finish(*take), QString());
    QCOMPARE(ReadRecording(take->Path()).pictureTracks, QStringList("h264 yuv420p 640x400"));
    // The picture is between 240 and 400.
    const Lumas lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kBlack, kBlack, kBlack, kBlack}), Told(lumas));
    Outcome middle =
        RunProgram("ffmpeg", {"-v", "error", "-sseof", "-0.2", "-i", take->Path(), "-frames:v", "1",
                              "-vf", "crop=140:380:250:10,scale=1:1:flags=area", "-f", "rawvideo",
                              "-pix_fmt", "gray", "-"});
    QVERIFY2(static_cast<uchar>(middle.output.append('\0').at(0)) > 225,
             "nothing is seen in the middle");
}

// As a monitor that sleeps: the last picture stays until it wakes.
void OutputRecordingTest::outputThatIsSwitchedOffAndOnIsRecordedOn()
{
    QVERIFY2(ShowColour(1, "#ff0000", kRed), "no coloured background");
    const auto take = m_takes->Begin("1");
    QVERIFY(TellSway({"output", "HEADLESS-2", "dpms", "off"}));
    const bool recorded = m_takes->WaitForSeconds(*take, 0.5);
    QVERIFY(TellSway({"output", "HEADLESS-2", "dpms", "on"}));
    QVERIFY(recorded);
    QVERIFY2(!take->HasEnded(), take->Text());
    QVERIFY2(ShowColour(1, "#0000ff", kBlue), "no coloured background");
    QVERIFY(m_takes->WaitForSeconds(*take, 0.5));
    QCOMPARE(m_takes->Finish(*take), QString());
    const Lumas lumas = LastLumas(take->Path());
    QVERIFY2(AreAlike(lumas, {kBlue, kBlue, kBlue, kBlue}), Told(lumas));
}

QTEST_GUILESS_MAIN(OutputRecordingTest)
#include "wayland_outputs_test.moc"
