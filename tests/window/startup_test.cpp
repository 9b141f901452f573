#include "tests/window/real_program.h"

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

class StartupTest : public RealProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareProgram(); }
    void cleanup() { EndProgram(); }

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
        QCOMPARE(Program().state(), QProcess::Running);
    }

    void anOlderLongerOutputFileIsOverwrittenFromItsFirstByte()
    {
        WriteFile(Work("Out.txt"), QByteArray(100000, '-'));
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
        Program().kill();
        QVERIFY(Program().waitForFinished());
        QVERIFY(QFile::exists(Work("Out.txt")));
    }

    void theOutputFileIsAPlainFileOfTheUser()
    {
        Start({"start"});
        QTRY_VERIFY(QFile::exists(Work("Out.txt")));
        const QFile::Permissions permissions = QFileInfo(Work("Out.txt")).permissions();
        QVERIFY(permissions.testFlag(QFile::ReadOwner) && permissions.testFlag(QFile::WriteOwner));
        QVERIFY(!permissions.testFlag(QFile::ExeOwner));
        QVERIFY(!permissions.testFlag(QFile::WriteOther));
        QVERIFY(!permissions.testFlag(QFile::WriteGroup));
        // 0644, minus the user's umask
        const mode_t kept = umask(0);
        umask(kept);
        QCOMPARE(permissions.testFlag(QFile::ReadGroup), (kept & S_IRGRP) == 0);
        QCOMPARE(permissions.testFlag(QFile::ReadOther), (kept & S_IROTH) == 0);
    }

    void anUnwritableOutputFileIsNoObstacle()
    {
        QVERIFY(QDir().mkdir(Work("Out.txt")));
        Start({"start"});
        QByteArray messages;
        QTRY_VERIFY((messages += Program().readAllStandardError()).contains("-list_devices true"));
        QCOMPARE(Program().state(), QProcess::Running);
    }

    // In a folder others can write to, the link may point to any file of the user.
    void anOutputFileThatIsALinkIsNotWrittenThrough()
    {
        WriteFile(Work("precious"), "precious");
        QVERIFY(QFile::link(Work("precious"), Work("Out.txt")));
        Start({"start"});
        QByteArray messages;
        QTRY_VERIFY((messages += Program().readAllStandardError()).contains("-list_devices true"));
        QCOMPARE(ReadFile(Work("precious")), QByteArray("precious"));
    }

    void anOutputFileThatIsALinkToNothingMakesNoFile()
    {
        QVERIFY(QFile::link(Work("nothing"), Work("Out.txt")));
        Start({"start"});
        QByteArray messages;
        QTRY_VERIFY((messages += Program().readAllStandardError()).contains("-list_devices true"));
        QVERIFY(!QFile::exists(Work("nothing")));
    }

    void noLoggingRuleKeepsDebugMessagesOutOfTheFile_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("value");
        QTest::newRow("rules") << "QT_LOGGING_RULES"
                               << "*=false;default.debug=false";
        QTest::newRow("a file of rules") << "QT_LOGGING_CONF"
                                         << "rules.ini";
        QTest::newRow("the user's rules") << "XDG_CONFIG_HOME"
                                          << "config";
        QTest::newRow("a pattern without the text") << "QT_MESSAGE_PATTERN"
                                                    << "%{type}";
        QTest::newRow("no console") << "QT_LOGGING_TO_CONSOLE"
                                    << "0";
        QTest::newRow("no forced console") << "QT_FORCE_STDERR_LOGGING"
                                           << "0";
    }

    void noLoggingRuleKeepsDebugMessagesOutOfTheFile()
    {
        QFETCH(QString, name);
        QFETCH(QString, value);
        QVERIFY(QDir(Work("")).mkpath("config/QtProject"));
        for (const char* rules : {"rules.ini", "config/QtProject/qtlogging.ini"}) {
            WriteFile(Work(rules), "[Rules]\n*=false\n*.debug=false\ndefault.debug=false\n");
        }
        const bool isPath = value.contains("config") || value.contains(".ini");
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(name, isPath ? Work(value) : value);
        Program().setProcessEnvironment(environment);
        InstallBeside("tool", "#!/bin/sh\necho \"$QT_FORCE_STDERR_LOGGING\" >forced\nexit 1\n");
        Start({"start"});
        QTRY_VERIFY2(QFile::exists(Work("forced")), "the window was not built");
        QTRY_VERIFY2(Log().startsWith("\"\\\"" + Recorder().toUtf8().replace("recorder", "tool")),
                     Log());
        // A Qt built for journald checks this before it writes there.
        QTRY_COMPARE(ReadFile(Work("forced")), QByteArray("1\n"));
    }

    void debugMessagesMakeNoLogFile()
    {
        Start({"start"});
        QTRY_VERIFY(Log().contains("-list_devices true"));
        QVERIFY(!QFile::exists(Work("Log.txt")));
    }

    // The part before the quote is the name of an existing program.
    void aProgramFolderNamedLikeACommandStartsNoOtherProgram()
    {
        EndProgram();
        PrepareProgram("p\" \"q");
        WriteFile(Beside("../p"), "#!/bin/sh\ntouch other\n");
        QFile::setPermissions(Beside("../p"), QFile::Permissions(0x7755));
        Start({"start"});
        QTRY_VERIFY2(Log().contains("-list_devices true"), "the window was not built");
        QVERIFY2(Log().contains("/p q/tool\\\" -f avfoundation"), Log());
        QVERIFY2(!QFile::exists(Work("other")), "another program was started");
    }

    // As macOS starts a program that was given administrator rights.
    void anotherRealUserIsNoObstacle()
    {
        if (geteuid() != 0) {
            QSKIP("needs root");
        }
        Program().setChildProcessModifier([] {
            if (setreuid(kUser, 0) != 0) {
                _exit(1);
            }
        });
        Start({"start"});
        QTRY_VERIFY2(Log().contains("-list_devices true") ||
                         Program().state() == QProcess::NotRunning,
                     "the window was not built");
        QVERIFY2(Program().state() == QProcess::Running,
                 "the program was ended: " + Log() + Program().readAllStandardError());
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

private:
    // The launcher exits at once with 0. The second instance got "start" only, and is ended here.
    void LaunchAndExpect(const QStringList& arguments)
    {
        // Replaces the second run of the real executable: the launcher starts its own path.
        InstallBeside(
            "tool",
            "#!/bin/sh\necho $PPID >pid\ntr '\\0' '\\n' </proc/$PPID/cmdline >copy\nexit 1\n");
        Start(arguments);
        QVERIFY2(Program().waitForFinished(20000), "the launcher did not end");
        QCOMPARE(Program().exitCode(), 0);
        QTRY_VERIFY2_WITH_TIMEOUT(ReadFile(Work("copy")).size() > 0, "no second copy ran", 20000);
        const auto pid = static_cast<pid_t>(ReadFile(Work("pid")).trimmed().toInt());
        const QByteArray copy = ReadFile(Work("copy"));
        QVERIFY(pid > 1);
        kill(pid, SIGKILL);
        QCOMPARE(copy, (Recorder() + "\nstart\n").toUtf8());
    }
};

QTEST_GUILESS_MAIN(StartupTest)
#include "startup_test.moc"
