#include "tests/window/real_program.h"

#include <QStandardPaths>

#include <csignal>
#include <pwd.h>

// The launcher role with a scripted pkexec, which records its arguments.
class LauncherLinuxTest : public RealProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareLauncher("program"); }
    void cleanup() { EndProgram(); }

    void withoutRightsTheLauncherAsksThroughPkexec()
    {
        StartWithoutRights();
        QVERIFY2(Program().waitForFinished(20000), "the launcher did not end");
        QCOMPARE(Program().exitCode(), 0);
        QCOMPARE(Asked(), Expected({}));
        QVERIFY2(!QFile::exists(Work("Out.txt")), "the launcher redirected standard error");
        QVERIFY2(!QFile::exists(Work("listed")), "the launcher built a window");
    }

    void withoutASoundServerOfOnesOwnTheUsersIsNamed()
    {
        m_environment.remove("PULSE_SERVER");
        Program().setProcessEnvironment(m_environment);
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Asked(), Expected({{"PULSE_SERVER", "unix:" + Beside("run") + "/pulse/native"}}));
    }

    void theCookieIsWhereTheUsersSoundServerKeepsIt_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("configuration");
        QTest::newRow("in the configuration") << "home/.config/pulse/cookie"
                                              << "";
        QTest::newRow("in a configuration elsewhere") << "home/conf/pulse/cookie"
                                                      << "home/conf";
        QTest::newRow("in the home") << "home/.pulse-cookie"
                                     << "";
        QTest::newRow("nowhere") << ""
                                 << "";
    }

    void theCookieIsWhereTheUsersSoundServerKeepsIt()
    {
        QFETCH(QString, file);
        QFETCH(QString, configuration);
        if (!file.isEmpty()) {
            QVERIFY(QDir().mkpath(QFileInfo(Beside(file)).path()));
            WriteFile(Beside(file), "cookie");
        }
        m_environment.remove("PULSE_COOKIE");
        if (!configuration.isEmpty()) {
            m_environment.insert("XDG_CONFIG_HOME", Beside(configuration));
        }
        Program().setProcessEnvironment(m_environment);
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Asked(), Expected({{"PULSE_COOKIE", file.isEmpty() ? QString() : Beside(file)}}));
    }

    void whatTheUserHasNotSetIsNotPassedOn()
    {
        for (const char* name :
             {"DISPLAY", "XAUTHORITY", "WAYLAND_DISPLAY", "XDG_RUNTIME_DIR",
              "DBUS_SESSION_BUS_ADDRESS", "XDG_CURRENT_DESKTOP", "PULSE_SERVER", "PULSE_COOKIE"}) {
            m_environment.remove(name);
        }
        Program().setProcessEnvironment(m_environment);
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Asked(), Expected({{"DISPLAY", ""},
                                    {"XAUTHORITY", ""},
                                    {"WAYLAND_DISPLAY", ""},
                                    {"XDG_RUNTIME_DIR", ""},
                                    {"DBUS_SESSION_BUS_ADDRESS", ""},
                                    {"XDG_CURRENT_DESKTOP", ""},
                                    {"PULSE_SERVER", ""},
                                    {"PULSE_COOKIE", ""}}));
    }

    void addressOfABusThatNamesAProgramIsNotPassedOn()
    {
        m_environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/x/bus;unixexec:path=/x/evil");
        Program().setProcessEnvironment(m_environment);
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Asked(), Expected({{"DBUS_SESSION_BUS_ADDRESS", ""}}));
    }

    // pkexec refuses to work if its parent is gone.
    void theLauncherWaitsWhilePkexecAsks()
    {
        InstallBeside("pkexec", "#!/bin/bash\necho $$ >asking\n"
                                "for ((i = 0; i < 600; ++i)); do\n"
                                "    [[ -e answer ]] && exec /bin/sleep 60\n"
                                "    read -r -t 0.05 <> <(:)\ndone\n");
        StartWithoutRights();
        QTRY_VERIFY2(!ReadFile(Work("asking")).isEmpty(), "pkexec was not asked");
        const auto pkexec = static_cast<pid_t>(ReadFile(Work("asking")).trimmed().toInt());
        // A launcher that does not wait ends soon, and tells nobody before.
        QVERIFY2(!Program().waitForFinished(1000), "the launcher did not wait for the answer");
        QCOMPARE(kill(pkexec, 0), 0);
        WriteFile(Work("answer"), {});
        QVERIFY2(Program().waitForFinished(20000), "the launcher waits for the second copy");
        QVERIFY2(kill(pkexec, 0) == 0, "the second copy ended with the launcher");
        kill(pkexec, SIGKILL);
    }

    void aRefusalEndsTheLauncherSilently()
    {
        InstallBeside("pkexec", "#!/bin/sh\nexit 126\n");
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Program().exitCode(), 0);
        QCOMPARE(Program().readAllStandardOutput() + Program().readAllStandardError(),
                 QByteArray());
    }

    void withoutPkexecTheLauncherEnds()
    {
        QVERIFY(QFile::remove(Beside("pkexec")));
        m_environment.insert("PATH", Beside(""));
        Program().setProcessEnvironment(m_environment);
        const QString setpriv = QStandardPaths::findExecutable("setpriv");
        QVERIFY(geteuid() != 0 || QFile::link(setpriv, Beside("setpriv")));
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Program().exitCode(), 0);
    }

    // env would take the path for a variable assignment and start a program called "start".
    void aProgramInAFolderWithAnEqualSignIsNotStarted()
    {
        EndProgram();
        PrepareLauncher("A=b");
        StartWithoutRights();
        QVERIFY(Program().waitForFinished(20000));
        QCOMPARE(Program().exitCode(), 0);
        QVERIFY2(!QFile::exists(Work("asked")), "pkexec was asked for another program");
        QVERIFY2(Program().readAllStandardError().contains("\"=\""), "nobody is told why");
    }

private:
    void PrepareLauncher(const QString& folder)
    {
        PrepareProgram(folder);
        InstallBeside("tool", "#!/bin/sh\ntouch listed\nexit 1\n");
        InstallBeside("pkexec", "#!/bin/sh\nprintf '%s\\n' \"$@\" >asked\n");
        m_environment = QProcessEnvironment();
        m_environment.insert("PATH", Beside("") + ":/usr/bin:/bin:/usr/sbin:/sbin");
        m_environment.insert("QT_QPA_PLATFORM", "offscreen");
        m_environment.insert("DISPLAY", ":7");
        m_environment.insert("XAUTHORITY", "/x/auth");
        m_environment.insert("WAYLAND_DISPLAY", "wayland-7");
        m_environment.insert("XDG_RUNTIME_DIR", Beside("run"));
        m_environment.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=/x/bus");
        m_environment.insert("XDG_CURRENT_DESKTOP", "GNOME");
        m_environment.insert("PULSE_SERVER", "unix:/p");
        m_environment.insert("PULSE_COOKIE", "/p/cookie");
        m_environment.insert("HOME", Beside("home"));
        m_environment.insert("UNRELATED", "1");
        // That user may not be able to read the suppressions file.
        m_environment.insert("ASAN_OPTIONS", "detect_leaks=0");
        Program().setProcessEnvironment(m_environment);
        QVERIFY(QDir().mkdir(Beside("home")) && QDir().mkdir(Beside("run")));
        QVERIFY(QFile::setPermissions(Beside("run"), QFile::Permissions(0x7700)));
        if (geteuid() == 0) {
            QCOMPARE(chown(qPrintable(Beside("run")), kUser, kUser), 0);
        }
    }

    // The arguments of pkexec. `changes` overrides what init() sets; an empty value unsets the
    // variable.
    QStringList Expected(const QMap<QString, QString>& changes) const
    {
        const QString root = QFile::decodeName(getpwuid(0)->pw_dir);
        QStringList arguments{"/usr/bin/env"};
        for (const auto& [name, value] : {std::pair<QString, QString>{"DISPLAY", ":7"},
                                          {"XAUTHORITY", "/x/auth"},
                                          {"WAYLAND_DISPLAY", "wayland-7"},
                                          {"XDG_RUNTIME_DIR", Beside("run")},
                                          {"XDG_CURRENT_DESKTOP", "GNOME"},
                                          {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/x/bus"},
                                          {"PULSE_SERVER", "unix:/p"},
                                          {"PULSE_COOKIE", "/p/cookie"},
                                          {"HOME", Beside("home")},
                                          {"XDG_CONFIG_HOME", root + "/.config"},
                                          {"XDG_CACHE_HOME", root + "/.cache"},
                                          {"XDG_DATA_HOME", root + "/.local/share"}}) {
            if (const QString set = changes.value(name, value); !set.isEmpty()) {
                arguments << name + '=' + set;
            }
        }
        return arguments << Recorder() << "start";
    }

    QStringList Asked()
    {
        return QString::fromUtf8(ReadFile(Work("asked"))).split('\n', Qt::SkipEmptyParts);
    }

    QProcessEnvironment m_environment;
};

QTEST_GUILESS_MAIN(LauncherLinuxTest)
#include "launcher_linux_test.moc"
