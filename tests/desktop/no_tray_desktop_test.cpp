// A desktop without a system tray: a minimised window replaces the icon.
#include "tests/support/desktop_test.h"
#include "tests/support/notifications.h"
#include "tests/support/own_bus.h"
#include "tests/support/recording_file.h"

#include <QDBusConnection>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

class NoTrayDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void clickInTheTaskListShowsTheStandIn();
    void standInStopsTheRecording();
    void standInBringsTheRecorderBack();
    void closingTheStandInDoesNotLoseTheRecording();
    void trayThatVanishesIsReplacedUntilItReturns();
    void failureIsAmongTheDesktopsNotifications();

private:
    bool WantsTray() const override { return false; }
    void OpenStandIn(Recorder& recorder);
    bool IsInTaskList() const { return m_desktop.IsInTaskList(Recorder::kStandIn); }
};

// Starts a recording and clicks the stand-in in the task list.
void NoTrayDesktopTest::OpenStandIn(Recorder& recorder)
{
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY2(WaitUntil([&] { return IsInTaskList(); }), "no window in place of the icon");
    m_desktop.Activate(m_desktop.ByTitle(Recorder::kStandIn)->id);
    QVERIFY2(WaitUntil([&] { return m_desktop.Shown(Recorder::kStandIn).has_value(); }),
             "a click in the task list does not show the stand-in");
}

void NoTrayDesktopTest::clickInTheTaskListShowsTheStandIn()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY2(!m_desktop.ByTitle(Recorder::kStandIn), "it stands there before a recording");
    QVERIFY(recorder.StartRecording());
    QVERIFY2(WaitUntil([&] { return IsInTaskList(); }), "no window in place of the icon");
    const DesktopWindow standIn = *m_desktop.ByTitle(Recorder::kStandIn);
    QVERIFY2(WaitUntil([&] { return m_desktop.IsMinimised(standIn.id); }), "it is not minimised");
    QVERIFY2(!m_desktop.Shown(Recorder::kStandIn), "it covers the screen that is recorded");

    m_desktop.Activate(standIn.id);
    QVERIFY2(WaitUntil([&] { return m_desktop.Shown(Recorder::kStandIn).has_value(); }),
             "activating it does not show it");
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY2(m_desktop.Shown(Recorder::kStandIn), "it does not stay");
    QVERIFY2(!recorder.IsShown(), "the main window covers it");
    QVERIFY2(recorder.ToolRuns(), "activating it stopped the recording");
}

void NoTrayDesktopTest::standInStopsTheRecording()
{
    Recorder recorder(m_desktop);
    OpenStandIn(recorder);
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY2(recorder.ClickInStandIn(Recorder::kStop), "the stand-in is not shown");
    QVERIFY2(recorder.WaitShown(), "its Stop does not bring the window back");
    QVERIFY2(recorder.WaitForTool(), "its Stop does not stop the recording");
    QVERIFY2(WaitUntil([&] { return !IsInTaskList(); }), "it stays after the recording");
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

void NoTrayDesktopTest::standInBringsTheRecorderBack()
{
    Recorder recorder(m_desktop);
    OpenStandIn(recorder);
    QVERIFY2(recorder.ClickInStandIn(Recorder::kShowWindow), "the stand-in is not shown");
    QVERIFY2(recorder.WaitShown(), "it does not bring the window back");
    QVERIFY2(WaitUntil([&] { return !m_desktop.Shown(Recorder::kStandIn); }),
             "it is not minimised again");
    QVERIFY2(recorder.ToolRuns(), "it stopped the recording");
    QVERIFY(recorder.RecordFor(1500));
    recorder.Click("record.record");
    QVERIFY(recorder.WaitForTool());
    QVERIFY2(WaitUntil([&] { return !IsInTaskList(); }), "it stays after the recording");
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

void NoTrayDesktopTest::closingTheStandInDoesNotLoseTheRecording()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(WaitUntil([&] { return m_desktop.ByTitle(Recorder::kStandIn).has_value(); }));
    m_desktop.Close(m_desktop.ByTitle(Recorder::kStandIn)->id);
    QVERIFY2(recorder.WaitShown(), "closing it does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "closing it stopped the recording");
    QVERIFY2(WaitUntil([&] { return IsInTaskList(); }), "the handle on the recording is gone");
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

// The panel crashes and is started again.
void NoTrayDesktopTest::trayThatVanishesIsReplacedUntilItReturns()
{
    QProcess tray;
    tray.setProgram("trayer");
    tray.setArguments({"--edge", "bottom", "--align", "right", "--widthtype", "request"});
    tray.start();
    QVERIFY2(WaitUntil([&] { return m_desktop.HasTray(); }), "no tray to begin with");
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.WaitTrayIcon());
    QVERIFY2(!IsInTaskList(), "the stand-in stands beside the icon");

    tray.kill();
    QVERIFY(tray.waitForFinished());
    QElapsedTimer time;
    time.start();
    QVERIFY2(WaitUntil([&] { return IsInTaskList(); }), "no stand-in for the vanished tray");
    qInfo("after %lld ms", time.elapsed());

    tray.start();
    QVERIFY2(WaitUntil([&] { return m_desktop.HasTray(); }), "no tray again");
    QVERIFY2(WaitUntil([&] { return !IsInTaskList(); }), "the stand-in stays beside the tray");
    QVERIFY2(recorder.ChooseInTray(1), "the icon does not return");
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.WaitForTool());
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
    tray.kill();
    tray.waitForFinished();
    QVERIFY(WaitUntil([&] { return !m_desktop.HasTray(); })); // as the other tests want it
}

void NoTrayDesktopTest::failureIsAmongTheDesktopsNotifications()
{
    const QTemporaryDir folder;
    OwnBus bus;
    QVERIFY2(bus.Start(folder.path()), "dbus-daemon does not start");
    constexpr auto name = "desktop";
    Notifications notifications;
    QVERIFY(notifications.Serve(
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), name)));
    {
        Recorder recorder(m_desktop);
        QVERIFY(recorder.StartOnRecordPage());
        QVERIFY(recorder.StartRecording());
        kill(recorder.Ffmpeg(), SIGKILL);
        QTRY_VERIFY2(!notifications.shown.isEmpty(), "the desktop is told nothing");
        QVERIFY2(notifications.shown.first().contains("The recording has ended by itself"),
                 qPrintable(notifications.shown.first()));
        QVERIFY2(recorder.CloseMessage(), "there is no box");
        QCOMPARE(notifications.shown.size(), 1);
    }
    QDBusConnection::disconnectFromBus(name);
}

QTEST_GUILESS_MAIN(NoTrayDesktopTest)
#include "no_tray_desktop_test.moc"
