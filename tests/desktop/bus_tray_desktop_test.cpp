// A desktop whose panel shows status items, which come by the session bus.
#include "tests/support/desktop_test.h"
#include "tests/support/status_items.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class BusTrayDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cleanupTestCase();
    void panelThatCrashesIsReplacedUntilItReturns();
    void panelThatLeavesItsListBehindIsReplacedUntilItReturns();
    void panelThatHangsDoesNotHangTheWindow();
    void panelThatHangsFromTheStartShowsTheIconWhenItGoesOn_data();
    void panelThatHangsFromTheStartShowsTheIconWhenItGoesOn();

private:
    bool WantsTray() const override { return false; }
    void Prepare() override;
    QString Address() const { return "unix:path=" + m_folder.filePath("bus"); }
    void StartPanel();
    void StartRecording(Recorder& recorder);
    bool HasStandIn() const { return m_desktop.IsInTaskList("Recording"); }
    // Whether it is there within a second, or what a busy machine makes of that.
    void ExpectStandIn();
    void ClickItem(const QString& item);

    QTemporaryDir m_folder;
    QProcess m_bus;
    StatusItems m_items;
};

void BusTrayDesktopTest::Prepare()
{
    m_bus.start("dbus-daemon",
                {"--session", "--nofork", "--print-address", "--address=" + Address()});
    QVERIFY2(m_bus.waitForReadyRead(), "dbus-daemon does not start");
}

void BusTrayDesktopTest::init()
{
    m_items.items.clear();
}

void BusTrayDesktopTest::cleanup()
{
    QDBusConnection::disconnectFromBus(kConnection);
}

void BusTrayDesktopTest::cleanupTestCase()
{
    m_bus.terminate();
    m_bus.waitForFinished();
}

void BusTrayDesktopTest::StartPanel()
{
    QVERIFY2(Serve(Address(), m_items), "the bus refuses the panel");
}

void BusTrayDesktopTest::StartRecording(Recorder& recorder)
{
    recorder.SetEnvironment("DBUS_SESSION_BUS_ADDRESS", Address());
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QTRY_COMPARE(m_items.items.size(), 1);
    QElapsedTimer time; // for a stand-in that would come
    time.start();
    QTRY_VERIFY(time.hasExpired(1500));
    QVERIFY2(!HasStandIn(), "the stand-in stands beside the icon");
}

void BusTrayDesktopTest::ExpectStandIn()
{
    QElapsedTimer time;
    time.start();
    QTRY_VERIFY2(HasStandIn(), "no stand-in for the vanished tray");
    qInfo("after %lld ms", time.elapsed());
}

void BusTrayDesktopTest::ClickItem(const QString& item)
{
    auto click = QDBusMessage::createMethodCall(item, "/StatusNotifierItem",
                                                "org.kde.StatusNotifierItem", "Activate");
    click.setArguments({0, 0});
    QDBusConnection(kConnection).send(click);
}

void BusTrayDesktopTest::panelThatCrashesIsReplacedUntilItReturns()
{
    StartPanel();
    Recorder recorder(m_desktop);
    StartRecording(recorder);
    QDBusConnection::disconnectFromBus(kConnection);
    ExpectStandIn();

    StartPanel();
    QTRY_VERIFY2(!HasStandIn(), "the stand-in stays beside the tray");
    QTRY_VERIFY2(m_items.items.size() == 2, "the icon does not return");
    ClickItem(m_items.items.last());
    QVERIFY2(recorder.WaitShown(), "a click on the icon does nothing");
}

// Where the list of items is kept by another program than the panel.
void BusTrayDesktopTest::panelThatLeavesItsListBehindIsReplacedUntilItReturns()
{
    StartPanel();
    Recorder recorder(m_desktop);
    StartRecording(recorder);
    m_items.Show(false);
    ExpectStandIn();
    m_items.Show(true);
    QTRY_VERIFY2(!HasStandIn(), "the stand-in stays beside the tray");
    ClickItem(m_items.items.last());
    QVERIFY2(recorder.WaitShown(), "a click on the icon does nothing");
}

// Qt would wait 25 s for each of its answers.
void BusTrayDesktopTest::panelThatHangsDoesNotHangTheWindow()
{
    PanelProcess panel(kStoppingPanel, Address());
    QVERIFY2(panel.HasSaid("ready"), "the bus refuses the panel");
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("DBUS_SESSION_BUS_ADDRESS", Address());
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY2(panel.HasSaid("hangs"), "the panel is not asked");
    QVERIFY2(!HasStandIn(), "the stand-in stands beside the icon");

    QVERIFY2(WaitUntil([&] { return HasStandIn(); }), "no stand-in for a tray that hangs");
    m_desktop.Close(m_desktop.ByTitle("Recording")->id);
    QVERIFY2(recorder.WaitShown(), "the stand-in does not bring the window back");
    recorder.Click("record.record");
    QVERIFY2(recorder.WaitForTool(), "the recording cannot be stopped");
}

void BusTrayDesktopTest::panelThatHangsFromTheStartShowsTheIconWhenItGoesOn_data()
{
    QTest::addColumn<bool>("before");
    QTest::newRow("before the record page") << true;
    QTest::newRow("before the recording") << false;
}

void BusTrayDesktopTest::panelThatHangsFromTheStartShowsTheIconWhenItGoesOn()
{
    QFETCH(bool, before);
    PanelProcess panel(kPlainPanel, Address());
    QVERIFY2(panel.HasSaid("ready"), "the bus refuses the panel");
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("DBUS_SESSION_BUS_ADDRESS", Address());
    if (before) {
        panel.Signal(SIGSTOP);
    }
    QVERIFY(recorder.StartOnRecordPage());
    if (!before) {
        QVERIFY2(panel.HasSaid("at rest"), "the panel is not asked");
        panel.Signal(SIGSTOP);
    }
    QVERIFY2(recorder.StartRecording(), "the recording waits for the panel");
    QVERIFY2(WaitUntil([&] { return HasStandIn(); }), "no stand-in for a tray that hangs");

    panel.Signal(SIGCONT);
    QVERIFY2(panel.HasSaid("item"), "the icon does not come");
    QVERIFY2(WaitUntil([&] { return !HasStandIn(); }), "the stand-in stays beside the tray");
    QVERIFY(recorder.IsRunning());
}

int main(int count, char** values)
{
    if (count == 3 && qstrcmp(values[1], kStoppingPanel) == 0) {
        return RunStoppingPanel(count, values);
    }
    if (count == 3 && qstrcmp(values[1], kPlainPanel) == 0) {
        return RunPlainPanel(count, values);
    }
    QCoreApplication program(count, values);
    BusTrayDesktopTest test;
    return QTest::qExec(&test, count, values);
}

#include "bus_tray_desktop_test.moc"
