// A desktop whose panel shows status items, which come by the session bus.
#include "tests/support/desktop_test.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <csignal>
#include <cstdio>

namespace {

constexpr auto kConnection = "panel";
constexpr auto kService = "org.kde.StatusNotifierWatcher";
constexpr auto kPath = "/StatusNotifierWatcher";
constexpr int kPauseMs = 200; // between questions that do not belong together

// What this program is with one of these arguments.
constexpr auto kPlainPanel = "--panel";
constexpr auto kStoppingPanel = "--stopping-panel";

} // namespace

// What a panel has on the bus: a list of status items, and the information whether they are shown.
class StatusItems : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ IsShown)
    Q_PROPERTY(int ProtocolVersion MEMBER version)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems MEMBER items)

public:
    int version = 0;
    QStringList items; // the connections that they came by

    bool IsShown() const
    {
        Q_EMIT WasAsked();
        return m_bShown;
    }
    void Show(bool show)
    {
        m_bShown = show;
        if (show) {
            Q_EMIT StatusNotifierHostRegistered();
        } else {
            Q_EMIT StatusNotifierHostUnregistered();
        }
    }

    Q_SIGNAL void WasAsked() const;
    Q_SIGNAL void GotItem() const;

    // NOLINTBEGIN(readability-identifier-naming): the names of the methods and signals
public slots:
    void RegisterStatusNotifierItem(const QString& /*item*/)
    {
        items << message().service();
        Q_EMIT GotItem();
    }

signals:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();
    // NOLINTEND(readability-identifier-naming)

private:
    bool m_bShown = true;
};

namespace {

bool Serve(const QString& address, StatusItems& items)
{
    auto bus = QDBusConnection::connectToBus(address, kConnection);
    return bus.isConnected() &&
           bus.registerObject(kPath, &items, QDBusConnection::ExportAllContents) &&
           bus.registerService(kService);
}

void Say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

int RunPanel(const QString& address, StatusItems& items)
{
    if (!Serve(address, items)) {
        return 1;
    }
    Say("ready");
    return QCoreApplication::exec();
}

// A panel in a process of its own, which says when it has got an item, and when it is at rest after
// it has been asked.
int RunPlainPanel(int count, char** values)
{
    const QCoreApplication program(count, values);
    StatusItems items;
    QTimer pause;
    pause.setSingleShot(true);
    pause.setInterval(kPauseMs);
    QObject::connect(&items, &StatusItems::WasAsked, &pause, [&] { pause.start(); });
    QObject::connect(&pause, &QTimer::timeout, &items, [] { Say("at rest"); });
    QObject::connect(&items, &StatusItems::GotItem, &items, [] { Say("item"); });
    return RunPanel(values[2], items);
}

// A panel in a process of its own. Some time after it has got an item it stops, at a moment when
// nobody waits for its answer.
int RunStoppingPanel(int count, char** values)
{
    const QCoreApplication program(count, values);
    StatusItems items;
    QTimer pause;
    pause.setSingleShot(true);
    pause.setInterval(kPauseMs);
    QElapsedTimer life;
    QObject::connect(&items, &StatusItems::WasAsked, &pause, [&] {
        if (!items.items.isEmpty() && !life.isValid()) {
            life.start();
        }
        if (life.isValid() && life.hasExpired(1000)) {
            pause.start();
        }
    });
    QObject::connect(&pause, &QTimer::timeout, &items, [] {
        Say("hangs");
        std::raise(SIGSTOP);
    });
    return RunPanel(values[2], items);
}

// What a panel of its own has said.
class PanelProcess
{
public:
    PanelProcess(const char* kind, const QString& address)
    {
        m_process.start(QCoreApplication::applicationFilePath(), {kind, address});
    }
    ~PanelProcess()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(PanelProcess)

    bool HasSaid(const char* text)
    {
        return WaitUntil([&] {
            m_said += m_process.readAll();
            return m_said.contains(text);
        });
    }
    void Signal(int signal) { kill(static_cast<pid_t>(m_process.processId()), signal); }

private:
    QProcess m_process;
    QByteArray m_said;
};

} // namespace

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
