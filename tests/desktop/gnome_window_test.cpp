// The program in a GNOME session, whose own dialog lets the screen be recorded.
#include "tests/support/gnome_desktop.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/run_program.h"

#include <QColor>
#include <QImage>
#include <QTest>

class GnomeWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void windowIsTheXServersAndCentred();
    void dialogIsAnsweredOnce();
    void otherMonitorCanBeChosen();
    void declinedDialogIsToldAtOnce();
    void waitingForTheDialogIsNoFailure();
    void stopSharingFinishesTheRecording();
    void standInBringsTheWindowBack();

private:
    void PressRecord(Recorder& recorder);
    void Share(Recorder& recorder, int monitor = 0);
    void ShowStandIn();
    void CheckPicture(const QString& recording, double seconds, bool hasBar = true);

    GnomeDesktop m_desktop;
    static constexpr auto kDialog = "Screen Share";
    static constexpr QSize kMonitor{1280, 800};
    static constexpr QPoint kPointer{900, 600}; // on a monitor, where there is no window
};

void GnomeWindowTest::initTestCase()
{
    QVERIFY2(m_desktop.Good(), "no GNOME session: run it through scripts/gnome-desktop");
}

void GnomeWindowTest::PressRecord(Recorder& recorder)
{
    // The session's user keeps the desktop's permission, for each test its own.
    recorder.SetEnvironment("XDG_STATE_HOME", qEnvironmentVariable("LUMENFOLD_DESKTOP_FOLDER") +
                                                  "/home/" + QTest::currentTestFunction());
    QVERIFY(recorder.Start());
    QVERIFY(m_desktop.AtRest(Recorder::kTitle));
    QVERIFY2(recorder.PressRecordUntilHidden(), "Record does not hide the window");
}

// Chooses a monitor in the dialog, counted from 0, and confirms. Repeats clicks the dialog was not
// ready for, as a user would.
void GnomeWindowTest::Share(Recorder& recorder, int monitor)
{
    constexpr int rowHeight = 50;
    constexpr int tries = 5;
    const auto dialog = m_desktop.AtRest(kDialog);
    QVERIFY2(dialog, "the desktop does not ask");
    const QPoint centre = dialog->place.center();
    for (int i = 0; i < tries && m_desktop.ByTitle(kDialog); ++i) {
        m_desktop.Click(centre + QPoint(0, 20 + monitor * rowHeight));
        m_desktop.Click(centre + QPoint(212, -132));
        WaitUntil([&] { return !m_desktop.ByTitle(kDialog); }, 3000);
    }
    QVERIFY2(WaitUntil([&] { return SecondsIn(recorder.Recording()) > 1; }),
             "nothing is recorded after the answer");
}

void GnomeWindowTest::ShowStandIn()
{
    constexpr int tries = 3; // the shell drops clicks while it is busy
    std::optional<DesktopWindow> standIn;
    for (int i = 0; i < tries && !standIn; ++i) {
        QVERIFY2(m_desktop.ClickInDash(Recorder::kStandIn), "the dash has no icon of the program");
        standIn = m_desktop.AtRest(Recorder::kStandIn);
    }
    QVERIFY2(standIn, "clicks in the dash do not show the stand-in");
    QVERIFY2(!m_desktop.Shown(Recorder::kTitle), "the main window covers it");
}

// The frame at a time shows the pointer at its place on the blue background, and a black bar at the
// top of the first monitor.
void GnomeWindowTest::CheckPicture(const QString& recording, double seconds, bool hasBar)
{
    const RecordingFile file = ReadRecording(recording);
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
    QCOMPARE(file.pictureTracks, QStringList("h264 yuv420p 1280x800"));
    const Outcome frame =
        RunProgram("ffmpeg", {"-v", "error", "-ss", QString::number(seconds), "-i", recording,
                              "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    const QImage picture(reinterpret_cast<const uchar*>(frame.output.constData()), // NOLINT: bytes
                         kMonitor.width(), kMonitor.height(), qsizetype(3) * kMonitor.width(),
                         QImage::Format_RGB888);
    QCOMPARE(frame.output.size(), picture.sizeInBytes());
    const QColor background = picture.pixelColor(kPointer - QPoint(100, 0));
    QVERIFY2(background.blue() > background.red() + 50, "not the screen's colours");
    QCOMPARE(picture.pixelColor(400, 15).value() < 30, hasBar);
    const QColor pointer = picture.pixelColor(kPointer + QPoint(2, 8)); // black with a white edge
    QVERIFY2(pointer.value() < 60 || pointer.red() > 200, "the pointer is missing");
}

void GnomeWindowTest::windowIsTheXServersAndCentred()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.Start());
    const auto window = m_desktop.AtRest(Recorder::kTitle);
    QVERIFY2(window && m_desktop.IsFromXServer(window->id), "it is Wayland's own");
    QCOMPARE(window->place.size(), QSize(1000, 600));
    QCOMPARE(window->place.center().x(), QRect({}, kMonitor).center().x());
}

void GnomeWindowTest::dialogIsAnsweredOnce()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    Share(recorder);
    m_desktop.Click(kPointer);
    const double length = SecondsIn(recorder.Recording());
    QVERIFY(WaitUntil([&] { return SecondsIn(recorder.Recording()) > length + 1; }));
    ShowStandIn();
    QVERIFY(recorder.ClickInStandIn(Recorder::kStop));
    QVERIFY2(recorder.WaitShown(), "its Stop does not bring the window back");
    QVERIFY2(recorder.WaitForTool(), "its Stop does not stop the recording");
    CheckPicture(recorder.Recording(), length + 0.7);

    const qsizetype before = recorder.Recordings().size();
    QVERIFY(m_desktop.AtRest(Recorder::kTitle));
    recorder.Click("record.record");
    QVERIFY2(WaitUntil([&] {
                 return recorder.Recordings().size() > before &&
                        QFileInfo(recorder.Recording()).size() > 0;
             }),
             m_desktop.ByTitle(kDialog) ? "the desktop asks again"
                                        : "nothing is recorded the second time");
}

void GnomeWindowTest::otherMonitorCanBeChosen()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    Share(recorder, 1);
    m_desktop.Click(kPointer + QPoint(kMonitor.width(), 0));
    const double length = SecondsIn(recorder.Recording());
    QVERIFY(WaitUntil([&] { return SecondsIn(recorder.Recording()) > length + 1; }));
    ShowStandIn();
    QVERIFY(recorder.ClickInStandIn(Recorder::kStop));
    QVERIFY2(recorder.WaitForTool(), "Stop does not stop the recording");
    CheckPicture(recorder.Recording(), length + 0.7, false);
}

void GnomeWindowTest::declinedDialogIsToldAtOnce()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    QVERIFY2(m_desktop.AtRest(kDialog), "the desktop does not ask");
    m_desktop.Press({"Escape"});
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }, 3000), "nothing is told");
    QVERIFY2(recorder.Log().contains("could not be started"), qPrintable(recorder.Log()));
    QCOMPARE(recorder.Recordings(), QStringList());
    const auto box = m_desktop.AtRest(recorder.Message()->title);
    QVERIFY2(box && !m_desktop.HasFocus(box->id), "keys for other programs would answer the box");
}

// It may take a person longer than 10 s.
void GnomeWindowTest::waitingForTheDialogIsNoFailure()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    QVERIFY2(m_desktop.AtRest(kDialog), "the desktop does not ask");
    QVERIFY2(!WaitUntil([&] { return recorder.Message().has_value(); }, 12000),
             qPrintable(recorder.Log()));
    Share(recorder);
}

// The bar's button for it.
void GnomeWindowTest::stopSharingFinishesTheRecording()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    Share(recorder);
    m_desktop.Click(kPointer);
    const double length = SecondsIn(recorder.Recording());
    QVERIFY(WaitUntil([&] { return SecondsIn(recorder.Recording()) > length + 1; }));
    QVERIFY2(m_desktop.ClickStopSharing(), "the bar has no button for it");
    QVERIFY2(recorder.WaitForTool(), "the recording goes on");
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    QVERIFY2(recorder.Log().contains("ended by itself"), qPrintable(recorder.Log()));
    CheckPicture(recorder.Recording(), length + 0.7);
}

void GnomeWindowTest::standInBringsTheWindowBack()
{
    Recorder recorder(m_desktop);
    PressRecord(recorder);
    Share(recorder);
    ShowStandIn();
    QVERIFY(recorder.ClickInStandIn(Recorder::kShowWindow));
    QVERIFY2(recorder.WaitShown(), "it does not bring the window back");
    QVERIFY2(WaitUntil([&] {
                 const auto standIn = m_desktop.ByTitle(Recorder::kStandIn);
                 return standIn && m_desktop.IsMinimised(standIn->id);
             }),
             "it is not minimised again");
    QVERIFY2(recorder.ToolRuns(), "it stopped the recording");
    m_desktop.Close(m_desktop.ByTitle(Recorder::kStandIn)->id);
    QVERIFY2(WaitUntil([&] { return m_desktop.ByTitle(Recorder::kStandIn).has_value(); }),
             "once closed, the handle on the recording is gone");
    m_desktop.Close(m_desktop.ByTitle(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

QTEST_GUILESS_MAIN(GnomeWindowTest)
#include "gnome_window_test.moc"
