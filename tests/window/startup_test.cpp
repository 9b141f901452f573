#include "tests/window/fake_tool.h"

#include <QProcess>

#include <csignal>
#include <unistd.h>

// The real program, offscreen, in a folder of its own.
class StartupTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_directory = std::make_unique<QTemporaryDir>();
        m_work = m_directory->filePath("work");
        QVERIFY(QDir().mkdir(m_work));
        QVERIFY(QFile::copy(QString(LUMENFOLD_BIN_DIR) + "/lumenfold-recorder",
                            m_directory->filePath("recorder")));
        InstallBeside("tool", "#!/bin/sh\nexit 1\n");
        QFile(m_directory->path()).setPermissions(QFile::Permissions(0x7755));
        QFile(m_work).setPermissions(QFile::Permissions(0x7777));
        m_program = std::make_unique<QProcess>();
        m_program->setWorkingDirectory(m_work);
    }

    void cleanup()
    {
        if (m_program->state() != QProcess::NotRunning) {
            m_program->kill();
            m_program->waitForFinished();
        }
    }

    void oneArgumentOfAnyTextShowsTheWindow_data()
    {
        QTest::addColumn<QString>("argument");
        QTest::newRow("start") << "start";
        QTest::newRow("any text") << "anything else";
        QTest::newRow("empty") << "";
    }

    void oneArgumentOfAnyTextShowsTheWindow()
    {
        QFETCH(QString, argument);
        Start({argument});
        QTRY_VERIFY2(Log().contains("-list_devices true"), "the window was not built");
        QCOMPARE(m_program->state(), QProcess::Running);
    }

    void anOlderLongerOutputFileIsOverwrittenFromItsFirstByte()
    {
        WriteFile(m_work + "/Out.txt", QByteArray(100000, '-'));
        Start({"start"});
        QTRY_VERIFY(Log().contains("-list_devices true"));
        QVERIFY(!Log().startsWith('-'));
        QCOMPARE(Log().size(), 100000);
        QVERIFY(Log().endsWith("----"));
    }

    void anAbnormalEndLeavesTheOutputFile()
    {
        Start({"start"});
        QTRY_VERIFY(Log().contains("-list_devices true"));
        m_program->kill();
        QVERIFY(m_program->waitForFinished());
        QVERIFY(QFile::exists(m_work + "/Out.txt"));
    }

    void theOutputFileIsAPlainFileOfTheUser()
    {
        Start({"start"});
        QTRY_VERIFY(QFile::exists(m_work + "/Out.txt"));
        const QFile::Permissions permissions = QFileInfo(m_work + "/Out.txt").permissions();
        QVERIFY(permissions.testFlag(QFile::ReadOwner) && permissions.testFlag(QFile::WriteOwner));
        QVERIFY(!permissions.testFlag(QFile::ExeOwner));
        QVERIFY(!permissions.testFlag(QFile::WriteOther));
    }

    void anUnwritableOutputFileIsNoObstacle()
    {
        QVERIFY(QDir().mkdir(m_work + "/Out.txt"));
        Start({"start"});
        QByteArray messages;
        QTRY_VERIFY((messages += m_program->readAllStandardError()).contains("-list_devices true"));
        QCOMPARE(m_program->state(), QProcess::Running);
    }

    void noArgumentAsRootStartsASecondCopyAtOnce()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        LaunchAndExpect({});
    }

    void twoArgumentsBehaveLikeNone()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        LaunchAndExpect({"start", "start"});
    }

    void withoutRightsTheLauncherAsksThroughPkexec()
    {
        InstallBeside("pkexec", "#!/bin/sh\n{ echo \"$@\"; echo cwd=$PWD; } >>asked\n");
        const QString expected =
            "env DISPLAY=:7 XAUTHORITY=/x/auth WAYLAND_DISPLAY=wayland-7 XDG_RUNTIME_DIR=" +
            m_directory->filePath("run") + " PULSE_SERVER=unix:/p " +
            m_directory->filePath("recorder") + " start\n";
        StartWithoutRights();
        QVERIFY2(m_program->waitForFinished(20000), "the launcher did not end");
        QCOMPARE(m_program->exitCode(), 0);
        QVERIFY2(ReadFile(m_work + "/asked").startsWith(expected.toUtf8()),
                 ReadFile(m_work + "/asked"));
        QVERIFY2(!QFile::exists(m_work + "/Out.txt"), "the launcher showed a window");
    }

    void aRefusalEndsTheLauncherSilently()
    {
        InstallBeside("pkexec", "#!/bin/sh\nexit 126\n");
        StartWithoutRights();
        QVERIFY(m_program->waitForFinished(20000));
        QCOMPARE(m_program->exitCode(), 0);
        QCOMPARE(m_program->readAllStandardOutput() + m_program->readAllStandardError(),
                 QByteArray());
    }

private:
    void InstallBeside(const QString& name, const QByteArray& script)
    {
        WriteFile(m_directory->filePath(name), script);
        QFile::setPermissions(m_directory->filePath(name), QFile::Permissions(0x7755));
    }

    void Start(const QStringList& arguments)
    {
        m_program->start(m_directory->filePath("recorder"), arguments);
        QVERIFY(m_program->waitForStarted());
    }

    // As an unprivileged user, with the test's own pkexec in PATH.
    void StartWithoutRights()
    {
        QProcessEnvironment environment;
        environment.insert("PATH", m_directory->path() + ":/usr/bin:/bin:/usr/sbin:/sbin");
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("DISPLAY", ":7");
        environment.insert("XAUTHORITY", "/x/auth");
        environment.insert("WAYLAND_DISPLAY", "wayland-7");
        environment.insert("XDG_RUNTIME_DIR", m_directory->filePath("run"));
        environment.insert("PULSE_SERVER", "unix:/p");
        environment.insert("UNRELATED", "1");
        // That user may not be able to read the suppressions file.
        environment.insert("ASAN_OPTIONS", "detect_leaks=0");
        m_program->setProcessEnvironment(environment);
        const QString run = m_directory->filePath("run");
        QVERIFY(QDir().mkdir(run) && QFile::setPermissions(run, QFile::Permissions(0x7700)));
        const QString recorder = m_directory->filePath("recorder");
        if (geteuid() == 0) {
            QCOMPARE(chown(qPrintable(run), 65534, 65534), 0);
            m_program->start("setpriv",
                             {"--reuid=65534", "--regid=65534", "--clear-groups", recorder});
        } else {
            m_program->start(recorder, {});
        }
        QVERIFY(m_program->waitForStarted());
    }

    // The launcher exits at once with 0. The second instance got "start" only, and is ended here.
    void LaunchAndExpect(const QStringList& arguments)
    {
        // Replaces the second run of the real executable: the launcher starts its own path.
        InstallBeside(
            "tool",
            "#!/bin/sh\necho $PPID >pid\ntr '\\0' '\\n' </proc/$PPID/cmdline >copy\nexit 1\n");
        Start(arguments);
        QVERIFY2(m_program->waitForFinished(20000), "the launcher did not end");
        QCOMPARE(m_program->exitCode(), 0);
        QTRY_VERIFY2_WITH_TIMEOUT(ReadFile(m_work + "/copy").size() > 0, "no second copy ran",
                                  20000);
        const auto pid = static_cast<pid_t>(ReadFile(m_work + "/pid").trimmed().toInt());
        const QByteArray copy = ReadFile(m_work + "/copy");
        QVERIFY(pid > 1);
        kill(pid, SIGKILL);
        QCOMPARE(copy, (m_directory->filePath("recorder") + "\nstart\n").toUtf8());
    }

    QByteArray Log() { return ReadFile(m_work + "/Out.txt"); }

    std::unique_ptr<QTemporaryDir> m_directory;
    QString m_work;
    std::unique_ptr<QProcess> m_program;
};

QTEST_GUILESS_MAIN(StartupTest)
#include "startup_test.moc"
