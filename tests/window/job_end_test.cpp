#include "app/end_signals.h"
#include "tests/support/child_processes.h"
#include "tests/window/job_in_program.h"

#include <csignal>

// The end of the program while the tool of a cut, a merge or a scan runs.
class JobEndTest : public JobInProgramTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareJobs(); }
    void cleanup() { FinishJobs(); }

    void closingTheWindowEndsTheProgramAndLeavesNothing_data()
    {
        QTest::addColumn<bool>("merge");
        QTest::addColumn<bool>("asked");
        QTest::addColumn<bool>("stubborn");
        QTest::newRow("merge") << true << false << false;
        QTest::newRow("merge, question open") << true << true << false;
        QTest::newRow("merge, a tool that goes on") << true << false << true;
        QTest::newRow("cut") << false << false << false;
        QTest::newRow("cut, question open") << false << true << false;
        QTest::newRow("cut, a tool that goes on") << false << false << true;
    }

    void closingTheWindowEndsTheProgramAndLeavesNothing()
    {
        QFETCH(bool, merge);
        QFETCH(bool, asked);
        QFETCH(bool, stubborn);
        PrepareJob(merge);
        QFile::remove(BesideProgram("asked"));
        SetJob(
            QByteArray(stubborn ? "trap '' TERM" : "trap 'printf x >\"$here/asked\"; exit' TERM") +
            "\nprintf part >\"${!#}\"; " + kUntilGo);
        LeaveOpen(merge ? kMergeQuestion : kCutQuestion);
        QElapsedTimer sinceClose;
        When(IsToolAtWork, [&] {
            QTimer::singleShot(20, &Window(), [&] {
                sinceClose.start();
                QVERIFY2(Window().close(), "the close was refused");
            });
            if (asked) {
                PressInDialog("Cancel");
            }
        });
        QCOMPARE(RunProgram([&] { StartJob(merge); }), 0);
        QVERIFY2(sinceClose.elapsed() < 1000, qPrintable(QString::number(sinceClose.elapsed())));
        QCOMPARE(Boxes().texts, QStringList());
        QCOMPARE(m_left > 0, asked);
        QVERIFY2(stubborn || QFile::exists(BesideProgram("asked")), "the tool was killed at once");
        QCOMPARE(Results(), QStringList());
        CloseWindow();
        QCOMPARE(ChildrenOf(QCoreApplication::applicationPid()), QList<pid_t>());
    }

    void quittingFromTheTrayEndsTheJobAndFinishesARecording()
    {
        MakeList({"a.mp4", "b.mp4"});
        SetJob("[[ $* == *avfoundation* ]] && source \"$here/record\"; printf part >\"${!#}\"; " +
               QByteArray(kUntilGo));
        WriteFile(BesideProgram("record"),
                  "until [[ $key == q ]]; do printf frame=; read -r -t 0.05 -N 1 key; done\n"
                  "printf whole >\"${!#}\"; exit 0\n");
        When(IsToolAtWork, [this] { Call("btnSlotMenuQuit"); }); // starts one, as it is idle
        QCOMPARE(RunProgram([this] { Press("Merge"); }), 0);
        CloseWindow();
        QCOMPARE(Results(), QStringList());
        const QStringList recordings = Recordings().filter(QRegularExpression("^2"));
        QCOMPARE(recordings.size(), 1);
        QCOMPARE(ReadFile(SaveDirectory() + '/' + recordings.first()), QByteArray("whole"));
    }

    void aSignalEndsItLikeTheCloseButton_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
        QTest::newRow("SIGHUP") << SIGHUP;
    }

    void aSignalEndsItLikeTheCloseButton()
    {
        QFETCH(int, number);
        PrepareJob(true);
        SetJob("printf part >\"${!#}\"; " + QByteArray(kUntilGo));
        const auto before = std::signal(number, SIG_DFL); // the test framework catches some
        const EndSignals endSignals(Window());
        When(IsToolAtWork, [number] { raise(number); });
        const int result = RunProgram([&] { StartJob(true); });
        std::signal(number, before);
        QCOMPARE(result, 0);
        QCOMPARE(Results(), QStringList());
        QCOMPARE(Boxes().texts, QStringList());
    }

    // As nohup starts it.
    void anIgnoredSignalStaysIgnored()
    {
        OpenWindow();
        std::signal(SIGHUP, SIG_IGN);
        const EndSignals endSignals(Window());
        struct sigaction action = {};
        sigaction(SIGHUP, nullptr, &action);
        std::signal(SIGHUP, SIG_DFL);
        QVERIFY(action.sa_handler == SIG_IGN);
    }
};

QTEST_MAIN(JobEndTest)
#include "job_end_test.moc"
