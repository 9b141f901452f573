// What `tool` asks the desktop's services for while it records, and what becomes of that.
#include "tests/support/idle_services_test.h"
#include "tests/support/users_bus.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <unistd.h>

using End = std::function<void(Take&)>;

namespace {

constexpr auto kProgram = "Lumenfold Screen Recorder";
constexpr auto kReason = "Recording the screen";

} // namespace

Q_DECLARE_METATYPE(End)

class AwakeBusTest : public IdleServicesTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void desktopIsHeldUntilTheRecordingEnds_data();
    void desktopIsHeldUntilTheRecordingEnds();
    void desktopShellThatRestartsIsAskedAgain();
    void desktopOfTheUserIsHeldByRoot();
};

void AwakeBusTest::init()
{
    Prepare();
}

void AwakeBusTest::cleanup()
{
    Finish();
}

void AwakeBusTest::desktopIsHeldUntilTheRecordingEnds_data()
{
    QTest::addColumn<End>("end");
    QTest::newRow("stopped") << End([](Take& take) { take.Type("q\n"); });
    QTest::newRow("recorder killed") << End([](Take& take) { take.EndRecorder(); });
    QTest::newRow("tool killed") << End([](Take& take) { take.EndTool(SIGKILL); });
    QTest::newRow("ffmpeg killed") << End([](Take& take) { take.EndFfmpeg(SIGKILL); });
}

void AwakeBusTest::desktopIsHeldUntilTheRecordingEnds()
{
    QFETCH(End, end);
    StartBus();
    RegisterAll();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    const QString who = QString(kProgram) + '|';
    QTRY_COMPARE(m_screenSaver->asked, QStringList(who + kReason));
    QTRY_COMPARE(m_powerManagement->asked, QStringList(who + kReason));
    QTRY_COMPARE(m_sessionManager->asked, QStringList(who + "0|" + kReason + "|8")); // 8: idle
    QTRY_COMPARE(m_logind->asked, QStringList("idle|" + who + kReason + "|block"));

    QDBusServiceWatcher watcher;
    watcher.setConnection(QDBusConnection("test"));
    watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    QStringList gone;
    connect(&watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            [&](const QString& name) { gone << name; });
    QCOMPARE(m_powerManagement->callers, m_screenSaver->callers);
    QCOMPARE(m_sessionManager->callers, m_screenSaver->callers);
    watcher.addWatchedService(m_screenSaver->callers.first());
    const double now = take->Taken();
    QTRY_VERIFY(take->Taken() > now + 1);
    QVERIFY2(gone.isEmpty(), "the desktop is released during the recording");
    QVERIFY2(!m_logind->IsReleased(), "logind is released during the recording");

    end(*take);
    QTRY_COMPARE(gone, m_screenSaver->callers);
    QTRY_VERIFY2(m_logind->IsReleased(), "logind is not released");
}

void AwakeBusTest::desktopShellThatRestartsIsAskedAgain()
{
    StartBus();
    Register("org.gnome.SessionManager", "/org/gnome/SessionManager", *m_sessionManager);
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_sessionManager->asked.size(), 1);
    Register("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", *m_screenSaver);
    QTRY_COMPARE(m_screenSaver->asked.size(), 1);
    QVERIFY(QDBusConnection("test").unregisterService("org.freedesktop.ScreenSaver"));
    QVERIFY(QDBusConnection("test").registerService("org.freedesktop.ScreenSaver"));
    QTRY_COMPARE(m_screenSaver->asked.size(), 2);
    QCOMPARE(m_sessionManager->asked.size(), 1);
    Stop(*take);
}

// The recorder runs as root after pkexec.
void AwakeBusTest::desktopOfTheUserIsHeldByRoot()
{
    if (geteuid() != 0) {
        QSKIP("only root can be another user");
    }
    UsersBus bus;
    QVERIFY2(bus.Start(m_folder->path(), "Inhibit"), "the user has no bus");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", bus.RuntimeDirectory());

    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QVERIFY2(WaitUntil([&] { return bus.HasHeard(kReason); }), "the user's desktop is not asked");
    QVERIFY2(
        WaitUntil([&] {
            return Content(QString("/proc/%1/status").arg(take->Tool())).contains("Uid:\t0\t0");
        }),
        "the recording is not root's any more");
    Stop(*take);
}

QTEST_GUILESS_MAIN(AwakeBusTest)
#include "awake_bus_test.moc"
