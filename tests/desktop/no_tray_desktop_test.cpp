// A desktop without a system tray: a minimised window replaces the icon.
#include "tests/support/desktop_test.h"
#include "tests/support/recording_file.h"

#include <QTest>

class NoTrayDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void minimisedWindowBringsTheRecorderBack();
    void closingTheStandInDoesNotLoseTheRecording();

private:
    bool WantsTray() const override { return false; }
    static constexpr auto kStandIn = "Recording";
};

void NoTrayDesktopTest::minimisedWindowBringsTheRecorderBack()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY2(!m_desktop.ByTitle(kStandIn), "it stands there before a recording");
    QVERIFY(recorder.StartRecording());
    QVERIFY2(WaitUntil([&] { return m_desktop.ByTitle(kStandIn).has_value(); }),
             "no window in its place");
    const DesktopWindow standIn = *m_desktop.ByTitle(kStandIn);
    QVERIFY2(WaitUntil([&] { return m_desktop.IsMinimised(standIn.id); }), "it is not minimised");
    QVERIFY2(!standIn.visible, "it covers the screen that is recorded");

    m_desktop.Activate(standIn.id);
    QVERIFY2(recorder.WaitShown(), "activating it does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "activating it stopped the recording");
    QVERIFY(recorder.RecordFor(1500));
    recorder.Click("record.record");
    QVERIFY(recorder.WaitForTool());
    QVERIFY2(
        WaitUntil([&] { return !m_desktop.IsMinimised(standIn.id) && !m_desktop.Shown(kStandIn); }),
        "it stays after the recording");
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

void NoTrayDesktopTest::closingTheStandInDoesNotLoseTheRecording()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(WaitUntil([&] { return m_desktop.ByTitle(kStandIn).has_value(); }));
    m_desktop.Close(m_desktop.ByTitle(kStandIn)->id);
    QVERIFY2(recorder.WaitShown(), "closing it does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "closing it stopped the recording");
    QVERIFY2(m_desktop.ByTitle(kStandIn), "the handle on the recording is gone");
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

QTEST_GUILESS_MAIN(NoTrayDesktopTest)
#include "no_tray_desktop_test.moc"
