// What the desktop tells about jobs that the recorder has stopped waiting for.
#include "tests/support/ffmpeg_stand_in.h"
#include "tests/support/notifications.h"
#include "tests/support/users_bus.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QLocalServer>
#include <QProcess>
#include <QTest>

#include <filesystem>
#include <memory>
#include <unistd.h>

class ToolNotificationTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void jobOfAKilledRecorderTellsItsEnd_data();
    void jobOfAKilledRecorderTellsItsEnd();
    void jobThatTakesTooLongTellsItsEnd();
    void jobInTimeTellsNothing();
    void nameOfOddBytesIsTold();
    void jobOfTheAdministratorIsToldToTheUser();
    void desktopWithoutNotificationsDelaysNothing_data();
    void desktopWithoutNotificationsDelaysNothing();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    void StartBus();
    // Starts a job and kills what a recorder would wait for. `script` follows.
    void LeaveJob(const QByteArray& script);

    std::unique_ptr<FfmpegStandIn> m_ffmpeg;
    QProcess m_bus;
    Notifications m_desktop;
};

void ToolNotificationTest::init()
{
    m_ffmpeg = std::make_unique<FfmpegStandIn>();
    const QByteArray problem = m_ffmpeg->MakeTheMovie();
    QVERIFY2(problem.isEmpty(), problem);
    m_desktop.shown.clear();
}

void ToolNotificationTest::cleanup()
{
    QDBusConnection::disconnectFromBus("test");
    m_ffmpeg.reset();
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    m_bus.terminate();
    m_bus.waitForFinished();
}

void ToolNotificationTest::StartBus()
{
    const QString address = "unix:path=" + m_ffmpeg->Path("bus");
    m_bus.start("dbus-daemon",
                {"--session", "--nofork", "--print-address", "--address=" + address});
    QVERIFY2(m_bus.waitForReadyRead(), "dbus-daemon does not start");
    auto connection = QDBusConnection::connectToBus(address, "test");
    QVERIFY2(connection.isConnected(), qPrintable(connection.lastError().message()));
    QVERIFY(m_desktop.Serve(connection));
    qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
}

void ToolNotificationTest::LeaveJob(const QByteArray& script)
{
    QVERIFY(m_ffmpeg->Use(FfmpegStandIn::kWait + script));
    QProcess tool;
    tool.start(TOOL_PROGRAM, m_ffmpeg->CutArguments());
    QVERIFY(WaitFor([this] { return m_ffmpeg->HasStarted(); }));
    tool.kill();
    QVERIFY(tool.waitForFinished());
    m_ffmpeg->Go();
}

void ToolNotificationTest::jobOfAKilledRecorderTellsItsEnd_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<QString>("told");
    QTest::newRow("good") << QByteArray(FfmpegStandIn::kWrite) << "The video is ready: cut.mp4\n";
    QTest::newRow("failed") << QByteArray("exit 3\n")
                            << "The video could not be made: cut.mp4\n"
                               "ffmpeg has failed with code 3.";
}

void ToolNotificationTest::jobOfAKilledRecorderTellsItsEnd()
{
    QFETCH(QByteArray, script);
    QFETCH(QString, told);
    StartBus();
    LeaveJob(script);
    QTRY_COMPARE_WITH_TIMEOUT(m_desktop.shown.size(), 1, 10000);
    QCOMPARE(m_desktop.shown.first(), "Lumenfold Screen Recorder\n" + told);
}

void ToolNotificationTest::jobThatTakesTooLongTellsItsEnd()
{
    StartBus();
    QVERIFY(m_ffmpeg->Use(QByteArray(FfmpegStandIn::kWait) + FfmpegStandIn::kWrite));
    QCOMPARE(RunProgram(HASTY_TOOL, m_ffmpeg->CutArguments()).code, 0);
    QCoreApplication::processEvents();
    QCOMPARE(m_desktop.shown, QStringList());
    m_ffmpeg->Go();
    QTRY_COMPARE_WITH_TIMEOUT(m_desktop.shown.size(), 1, 10000);
    QVERIFY2(m_desktop.shown.first().contains("is ready"), qPrintable(m_desktop.shown.first()));
}

// The dialog has told it.
void ToolNotificationTest::jobInTimeTellsNothing()
{
    StartBus();
    QVERIFY(m_ffmpeg->Use(FfmpegStandIn::kWrite));
    QCOMPARE(RunProgram(TOOL_PROGRAM, m_ffmpeg->CutArguments()).code, 0);
    QVERIFY(m_ffmpeg->Use("exit 3\n"));
    QCOMPARE(RunProgram(TOOL_PROGRAM, m_ffmpeg->CutArguments()).code, 3);
    QCoreApplication::processEvents();
    QCOMPARE(m_desktop.shown, QStringList());
}

// What is not UTF-8 would make the bus close the connection.
void ToolNotificationTest::nameOfOddBytesIsTold()
{
    StartBus();
    QVERIFY(m_ffmpeg->Use(QByteArray(FfmpegStandIn::kWait) + FfmpegStandIn::kWrite));
    QStringList arguments = m_ffmpeg->CutArguments();
    arguments.removeLast();
    // $0 has the folder. QProcess cannot pass such a name.
    QProcess shell;
    shell.start("/bin/bash", QStringList{"-c", "exec \"$@\" \"$0/\"$'<b>\\xff.mp4'",
                                         m_ffmpeg->Path("out"), HASTY_TOOL} +
                                 arguments);
    QVERIFY(shell.waitForFinished());
    m_ffmpeg->Go();
    QTRY_COMPARE_WITH_TIMEOUT(m_desktop.shown.size(), 1, 10000);
    std::filesystem::remove_all(m_ffmpeg->Path("out").toStdString()); // Qt cannot
    QVERIFY2(m_desktop.shown.first().contains("is ready: <b>?.mp4"),
             qPrintable(m_desktop.shown.first()));
}

// After pkexec.
void ToolNotificationTest::jobOfTheAdministratorIsToldToTheUser()
{
    if (geteuid() != 0) {
        QSKIP("only root can be another user");
    }
    UsersBus bus;
    QVERIFY2(bus.Start(m_ffmpeg->Path("."), "Notify"), "the user has no bus");
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", bus.RuntimeDirectory());
    LeaveJob(FfmpegStandIn::kWrite);
    const bool isTold = WaitFor([&] { return bus.HasHeard("The video is ready: cut.mp4"); });
    qputenv("XDG_RUNTIME_DIR", before);
    QVERIFY2(isTold, "the user's desktop tells nothing");
}

void ToolNotificationTest::desktopWithoutNotificationsDelaysNothing_data()
{
    QTest::addColumn<QString>("bus");
    QTest::newRow("no bus") << "";
    QTest::newRow("bus is gone") << "unix:path=/nowhere";
    QTest::newRow("no address") << "%%%";
    QTest::newRow("bus does not answer") << "silent";
}

// A process that stays would keep the pipe open.
void ToolNotificationTest::desktopWithoutNotificationsDelaysNothing()
{
    QFETCH(QString, bus);
    QLocalServer silent;
    if (bus == "silent") {
        QVERIFY(silent.listen(m_ffmpeg->Path("bus")));
        bus = "unix:path=" + silent.fullServerName();
    }
    if (!bus.isEmpty()) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", bus.toUtf8());
    }
    LeaveJob(FfmpegStandIn::kWrite);
    QVERIFY(WaitFor([this] { return m_ffmpeg->Results() == QStringList{"cut.mp4"}; }));
    // Its standard streams are /dev/null by now; only its command line tells which one it is.
    const QString own = m_ffmpeg->Path("out/cut.mp4");
    const auto isGone = [&] {
        for (const QString& process : QDir("/proc").entryList(QDir::Dirs)) {
            if (Content("/proc/" + process + "/cmdline").contains(QFile::encodeName(own))) {
                return false;
            }
        }
        return true;
    };
    QVERIFY2(WaitFor(isGone, 8000), "a process is left");
}

QTEST_GUILESS_MAIN(ToolNotificationTest)
#include "tool_notification_test.moc"
