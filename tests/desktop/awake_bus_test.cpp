// What `tool` asks the desktop's services for while it records, and what becomes of that.
#include "tests/support/desktop.h"
#include "tests/support/idle_services.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusServiceWatcher>
#include <QDir>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using End = std::function<void(Take&)>;

constexpr auto kProgram = "Lumenfold Screen Recorder";
constexpr auto kReason = "Recording the screen";

} // namespace

Q_DECLARE_METATYPE(End)

class AwakeBusTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void desktopIsHeldUntilTheRecordingEnds_data();
    void desktopIsHeldUntilTheRecordingEnds();
    void desktopShellThatRestartsIsAskedAgain();
    void desktopOfTheUserIsHeldByRoot();
    void servicesThatDoNotRunAreNotStarted();
    void answersDoNotMatter_data();
    void answersDoNotMatter();
    void busThatFailsDelaysNothing_data();
    void busThatFailsDelaysNothing();
    void busThatVanishesDoesNotEndTheRecording();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    void StartBus(const QStringList& options = {"--session"});
    void Register(const QString& service, const QString& path, Service& object);
    void RegisterAll();
    std::unique_ptr<Take> Record();
    void Stop(Take& take);

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcess m_bus;
    std::unique_ptr<ScreenSaver> m_screenSaver;
    std::unique_ptr<PowerManagement> m_powerManagement;
    std::unique_ptr<SessionManager> m_sessionManager;
    std::unique_ptr<Logind> m_logind;
};

void AwakeBusTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
    m_screenSaver = std::make_unique<ScreenSaver>();
    m_powerManagement = std::make_unique<PowerManagement>();
    m_sessionManager = std::make_unique<SessionManager>();
    m_logind = std::make_unique<Logind>();
}

void AwakeBusTest::cleanup()
{
    QDBusConnection::disconnectFromBus("test");
    if (m_bus.state() != QProcess::NotRunning) {
        m_bus.terminate();
        m_bus.waitForFinished();
    }
}

// One bus is both, the session's and the system's.
void AwakeBusTest::StartBus(const QStringList& options)
{
    const QString address = "unix:path=" + m_folder->filePath("bus");
    m_bus.start("dbus-daemon",
                options + QStringList{"--nofork", "--print-address", "--address=" + address});
    QVERIFY2(m_bus.waitForReadyRead(), "dbus-daemon does not start");
    auto connection = QDBusConnection::connectToBus(address, "test");
    QVERIFY2(connection.isConnected(), qPrintable(connection.lastError().message()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
}

void AwakeBusTest::Register(const QString& service, const QString& path, Service& object)
{
    QDBusConnection bus("test");
    QVERIFY(bus.registerObject(path, &object, QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(service));
}

void AwakeBusTest::RegisterAll()
{
    Register("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", *m_screenSaver);
    Register("org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
             *m_powerManagement);
    Register("org.gnome.SessionManager", "/org/gnome/SessionManager", *m_sessionManager);
    Register("org.freedesktop.login1", "/org/freedesktop/login1", *m_logind);
}

// Returns the recording when it is running.
std::unique_ptr<Take> AwakeBusTest::Record()
{
    auto take = std::make_unique<Take>(m_folder->filePath("o.mp4"), "0");
    return WaitUntil([&] { return take->HasPicture(); }) ? std::move(take) : nullptr;
}

void AwakeBusTest::Stop(Take& take)
{
    take.Type("q\n");
    QVERIFY(take.WaitForEnd());
    QCOMPARE(take.ExitCode(), 0);
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

// The recorder runs as root after pkexec. A bus lets nobody in but the user it belongs to.
void AwakeBusTest::desktopOfTheUserIsHeldByRoot()
{
    constexpr uid_t user = 65534;
    if (geteuid() != 0) {
        QSKIP("only root can be another user");
    }
    const QString runtime = m_folder->filePath("runtime");
    QVERIFY(QDir().mkdir(runtime));
    QCOMPARE(chown(QFile::encodeName(runtime), user, user), 0);
    QCOMPARE(chmod(QFile::encodeName(m_folder->path()), 0711), 0);
    const auto startAsUser = [&](QProcess& process, const QStringList& command) {
        const QString id = QString::number(user);
        process.start("setpriv",
                      QStringList{"--reuid", id, "--regid", id, "--clear-groups"} + command);
        QVERIFY2(process.waitForReadyRead(), qPrintable(command.first() + " does not start"));
    };
    const QString address = "unix:path=" + runtime + "/bus";
    startAsUser(
        m_bus, {"dbus-daemon", "--session", "--nofork", "--print-address", "--address=" + address});
    QProcess monitor;
    startAsUser(monitor, {"dbus-monitor", "--address", address, "member='Inhibit'"});
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(runtime));

    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QByteArray heard;
    QVERIFY2(WaitUntil([&] {
                 monitor.waitForReadyRead(100);
                 heard += monitor.readAll();
                 return heard.contains(kReason);
             }),
             "the user's desktop is not asked");
    QVERIFY2(
        WaitUntil([&] {
            return Content(QString("/proc/%1/status").arg(take->Tool())).contains("Uid:\t0\t0");
        }),
        "the recording is not root's any more");
    Stop(*take);
    monitor.terminate();
    monitor.waitForFinished();
}

void AwakeBusTest::servicesThatDoNotRunAreNotStarted()
{
    const QString started = m_folder->filePath("started");
    QVERIFY(WriteProgram(m_folder->filePath("service"), "#!/bin/sh\ntouch " + started.toUtf8()));
    const auto write = [&](const QString& name, const QByteArray& text) {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    QVERIFY(write("org.freedesktop.ScreenSaver.service",
                  "[D-BUS Service]\nName=org.freedesktop.ScreenSaver\nExec=" +
                      m_folder->filePath("service").toUtf8() + '\n'));
    QVERIFY(write("bus.conf",
                  "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                  "<servicedir>" +
                      m_folder->path().toUtf8() +
                      "</servicedir><policy context=\"default\">"
                      "<allow send_destination=\"*\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
                      "</policy></busconfig>"));
    StartBus({"--config-file=" + m_folder->filePath("bus.conf")});
    Register("org.gnome.SessionManager", "/org/gnome/SessionManager", *m_sessionManager);
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_sessionManager->asked.size(), 1); // the other one was asked before
    Stop(*take);
    QVERIFY2(!QFile::exists(started), "the recording has started a service");
    QDBusConnection("test").interface()->startService("org.freedesktop.ScreenSaver");
    QTRY_VERIFY2(QFile::exists(started), "the test's service cannot be started at all");
}

void AwakeBusTest::answersDoNotMatter_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::newRow("refusal") << Answer::Refusal;
    QTest::newRow("silence") << Answer::Silence;
}

void AwakeBusTest::answersDoNotMatter()
{
    QFETCH(Answer, answer);
    StartBus();
    RegisterAll();
    for (Service* service : std::initializer_list<Service*>{
             m_screenSaver.get(), m_sessionManager.get(), m_logind.get()}) {
        service->answer = answer;
    }
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_logind->asked.size(), 1);
    QTRY_COMPARE(m_sessionManager->asked.size(), 1);
    Stop(*take);
}

void AwakeBusTest::busThatFailsDelaysNothing_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("no address") << QByteArray();
    QTest::newRow("bus is gone") << QByteArray("unix:path=/nowhere");
    QTest::newRow("nonsense") << QByteArray("%%%");
    QTest::newRow("bus does not answer") << QByteArray("silent");
}

// The library gives up on a bus after 25 s.
void AwakeBusTest::busThatFailsDelaysNothing()
{
    QFETCH(QByteArray, address);
    QLocalServer silent;
    if (address == "silent") {
        QVERIFY(silent.listen(m_folder->filePath("bus")));
        address = "unix:path=" + silent.fullServerName().toUtf8();
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    QElapsedTimer time;
    time.start();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    Stop(*take);
    QVERIFY2(time.elapsed() < 12000, qPrintable(QString("%1 ms").arg(time.elapsed())));
}

void AwakeBusTest::busThatVanishesDoesNotEndTheRecording()
{
    StartBus();
    RegisterAll();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_screenSaver->asked.size(), 1);
    QTRY_COMPARE(m_logind->asked.size(), 1);
    m_bus.kill();
    QVERIFY(m_bus.waitForFinished());
    const double now = take->Taken();
    QTRY_VERIFY2(take->Taken() > now + 1, "it has ended");
    Stop(*take);
}

QTEST_GUILESS_MAIN(AwakeBusTest)
#include "awake_bus_test.moc"
