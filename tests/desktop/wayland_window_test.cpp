// The program in a Wayland session without a tray, as ./run starts it there.
#include "tests/support/files.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/run_program.h"
#include "tests/support/sway_desktop.h"

#include <QTest>

#include <csignal>

class WaylandWindowTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void windowIsWaylandsOwnAndCentred();
    void programsThatItStartsChooseForThemselves();
    void standInStopsTheRecordingOfTheScreen();
    void standInBringsTheWindowBack();
    void closingTheStandInDoesNotLoseTheRecording();
    void failureIsToldInABoxThatCanBeMoved();
    void windowDoesNotCoverTheBox();
    void programEndsThoughQtReadsLate();
    void endOfTheSessionFinishesTheRecording();

private:
    void Begin(Recorder& recorder);
    SwayDesktop m_desktop;
};

void WaylandWindowTest::initTestCase()
{
    QVERIFY2(m_desktop.Good(), "no sway: run it through scripts/wayland-desktop");
}

void WaylandWindowTest::Begin(Recorder& recorder)
{
    QVERIFY(recorder.Start());
    QVERIFY(m_desktop.AtRest(Recorder::kTitle));
    QVERIFY2(recorder.PressRecordUntilHidden(), "Record does not hide the window");
    QVERIFY2(WaitUntil([&] { return SecondsIn(recorder.Recording()) > 0.5; }),
             "nothing is recorded");
    QVERIFY2(WaitUntil([&] { return m_desktop.Shown(Recorder::kStandIn).has_value(); }),
             "no window in place of the tray icon");
}

void WaylandWindowTest::windowIsWaylandsOwnAndCentred()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.Start());
    const auto window = m_desktop.AtRest(Recorder::kTitle);
    QVERIFY2(window && m_desktop.IsNative(window->id), "it is a window of the X server");
    QCOMPARE(window->place.size(), QSize(1000, 600));
    const QPoint off = window->place.center() - QRect(0, 0, 1280, 800).center();
    QVERIFY2(off.manhattanLength() < 20, "it is not centred");
}

// Not by the choice that was made for the window.
void WaylandWindowTest::programsThatItStartsChooseForThemselves()
{
    Recorder recorder(m_desktop);
    recorder.ReplaceTool("env >\"$HOME/environment\"\nexec \"$REAL\" \"$@\"\n");
    QVERIFY(recorder.Start());
    const QByteArray environment =
        Content(recorder.SaveDirectory().section('/', 0, -2) + "/environment");
    QVERIFY2(environment.contains("WAYLAND_DISPLAY"), "the tool has not written it");
    QVERIFY2(!environment.contains("QT_QPA_PLATFORM"), environment.constData());
}

void WaylandWindowTest::standInStopsTheRecordingOfTheScreen()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    const auto standIn = m_desktop.AtRest(Recorder::kStandIn);
    QVERIFY2(standIn && m_desktop.HasFocus(standIn->id), "the stand-in is not what the user finds");
    QVERIFY2(recorder.ClickInStandIn(Recorder::kStop), "the stand-in is not shown");
    QVERIFY2(recorder.WaitShown(), "its Stop does not bring the window back");
    QVERIFY2(recorder.WaitForTool(), "its Stop does not stop the recording");
    QVERIFY2(!m_desktop.ByTitle(Recorder::kStandIn), "it stays after the recording");

    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
    QCOMPARE(file.pictureTracks, QStringList("h264 yuv420p 1280x800"));
    // The screen is dark grey but for the stand-in, which is light.
    const Outcome frame =
        RunProgram("ffmpeg", {"-v", "error", "-sseof", "-0.3", "-i", recorder.Recording(),
                              "-frames:v", "1", "-f", "rawvideo", "-pix_fmt", "gray", "-"});
    QVERIFY2(frame.output.size() == qsizetype(1280) * 800, "no frame");
    const auto brightness = [&](QPoint place) {
        return static_cast<uchar>(frame.output[qsizetype(place.y()) * 1280 + place.x()]);
    };
    QVERIFY2(brightness(standIn->place.topLeft() + QPoint(5, 5)) > 200, "the stand-in is missing");
    QVERIFY2(brightness({5, 5}) > 30 && brightness({5, 5}) < 100,
             "the screen is not the one that is shown");
}

void WaylandWindowTest::standInBringsTheWindowBack()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    QVERIFY2(recorder.ClickInStandIn(Recorder::kShowWindow), "the stand-in is not shown");
    QVERIFY2(recorder.WaitShown(), "it does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "it stopped the recording");
    m_desktop.Activate(m_desktop.AtRest(Recorder::kTitle)->id);
    recorder.Click("record.record");
    QVERIFY2(recorder.WaitForTool(), "Stop in the window does not stop the recording");
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

void WaylandWindowTest::closingTheStandInDoesNotLoseTheRecording()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    m_desktop.Close(m_desktop.ByTitle(Recorder::kStandIn)->id);
    QVERIFY2(recorder.WaitShown(), "closing it does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "closing it stopped the recording");
    QVERIFY2(WaitUntil([&] { return m_desktop.Shown(Recorder::kStandIn).has_value(); }),
             "the handle on the recording is gone");
    m_desktop.Close(m_desktop.AtRest(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

// It gets the keyboard, but keys that are meant for another program do not close it. Only the
// compositor can move it.
void WaylandWindowTest::failureIsToldInABoxThatCanBeMoved()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    kill(recorder.Ffmpeg(), SIGKILL);
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    const auto box = m_desktop.AtRest(recorder.Message()->title);
    QVERIFY2(box && m_desktop.HasFocus(box->id), "sway has not given it the keyboard");
    m_desktop.Press({"space", "Return", "Escape"});
    const QRect place = box->place;
    const QPoint strip = place.topLeft() + QPoint(place.width() / 2, 15);
    m_desktop.Drag(strip, strip + QPoint(100, 150));
    QVERIFY2(WaitUntil([&] {
                 const auto now = recorder.Message();
                 const QPoint moved = now ? now->place.topLeft() - place.topLeft() : QPoint();
                 return moved.x() > 50 && moved.y() > 75;
             }),
             "a key closes it, or dragging it does not move it");
    QVERIFY2(recorder.CloseMessage(), "its OK does not close it");
}

// Of a failure that has not been answered yet.
void WaylandWindowTest::windowDoesNotCoverTheBox()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    kill(recorder.Ffmpeg(), SIGKILL);
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    const auto standIn = m_desktop.AtRest(Recorder::kStandIn);
    QVERIFY2(standIn, "the stand-in is gone");
    m_desktop.Activate(standIn->id);
    QVERIFY2(recorder.ClickInStandIn(Recorder::kShowWindow) && recorder.WaitShown(),
             "the window does not come back");
    // sway drops clicks in a window that is being arranged.
    QVERIFY2(WaitUntil([&] {
                 recorder.AnswerMessage();
                 return !recorder.Message();
             }),
             "clicks on the box's OK meet the window");
}

// Qt closes the connection to the compositor while something comes from it.
void WaylandWindowTest::programEndsThoughQtReadsLate()
{
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("LD_PRELOAD", LATE_READER_PRELOAD);
    QVERIFY(recorder.Start());
    QVERIFY(m_desktop.AtRest(Recorder::kTitle));
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QVERIFY2(WaitUntil([&] { return !recorder.IsRunning(); }), "the program hangs at its end");
}

// The last test: the compositor ends, and the program with it.
void WaylandWindowTest::endOfTheSessionFinishesTheRecording()
{
    Recorder recorder(m_desktop);
    Begin(recorder);
    const QString recording = recorder.Recording();
    SwayDesktop::Ask({"exit"});
    QVERIFY2(WaitUntil([&] { return !recorder.IsRunning(); }), "the stand-in keeps the session");
    QVERIFY2(WaitUntil([&] { return recorder.Ffmpeg() == 0; }), "the recording does not end");
    const RecordingFile file = ReadRecording(recording);
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
    QVERIFY2(file.seconds > 0.5, "what was recorded until then is missing");
}

QTEST_GUILESS_MAIN(WaylandWindowTest)
#include "wayland_window_test.moc"
