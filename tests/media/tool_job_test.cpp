// How a trim or join is run: its file is whole or not there, whatever happens to the processes.
#include "tests/support/child_processes.h"
#include "tests/support/job_test.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>

class ToolJobTest : public JobTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void fileAppearsWhenItIsWhole();
    void failureLeavesNothing_data();
    void failureLeavesNothing();
    void cancelLeavesNothing_data();
    void cancelLeavesNothing();
    void signalBeforeTheStartLeavesNothing();
    void killedWorkerLeavesNothing();
    void killedScriptLeavesNoProcess_data();
    void killedScriptLeavesNoProcess();
    void endOfTheRecorderDoesNotEndTheJob_data();
    void endOfTheRecorderDoesNotEndTheJob();
    void recorderIsFreeBeforeItsWaitIsOver();
    void secondJobRunsWhileTheFirstIsInTheBackground();
    void twoJobsWithOneDestinationAreBothKept();
    void relativeDestinationIsInTheWorkingDirectory();
};

void ToolJobTest::init()
{
    Prepare();
}

void ToolJobTest::cleanup()
{
    Finish();
}

void ToolJobTest::fileAppearsWhenItIsWhole()
{
    UseFfmpeg("head -c 5000 \"$MOVIE\" >\"$OUT\"\ntouch \"$HERE/half\"\n" + kWait +
              "tail -c +5001 \"$MOVIE\" >>\"$OUT\"\n");
    const auto process = StartCut();
    QVERIFY(WaitFor([this] { return QFile::exists(Path("half")); }));
    QCOMPARE(Files(), QStringList{"cut.mp4.part"});
    QCOMPARE(Content(Path("out/cut.mp4.part")).size(), 5000);
    Go();
    const End end(*process);
    QVERIFY2(end.code == 0 && !TellsFailure(end.text), end.text);
    QCOMPARE(Files(), QStringList{"cut.mp4"});
    QVERIFY2(Content(Path("out/cut.mp4")) == Movie(), "the file is not what ffmpeg wrote");
}

void ToolJobTest::failureLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("an error in the end") << kWrite + "exit 3\n";
    QTest::newRow("killed") << kWrite + "kill -KILL $$\n";
    QTest::newRow("ended by a signal") << kWrite + "kill -TERM $$\n";
    QTest::newRow("nothing written") << QByteArray("exit 0\n");
    QTest::newRow("index missing") << QByteArray("head -c 10000 \"$MOVIE\" >\"$OUT\"\n");
    QTest::newRow("text instead of a movie") << QByteArray("head -c 10000 /dev/zero >\"$OUT\"\n");
    QTest::newRow("disk full") << "ulimit -f 1\n" + kWrite;
    QTest::newRow("other words") << kWrite + "echo 'Conversion failed!' >&2\nexit 1\n";
    QTest::newRow("no words") << kWrite + "exec >/dev/null 2>&1\nexit 1\n";
}

void ToolJobTest::failureLeavesNothing()
{
    QFETCH(QByteArray, script);
    UseFfmpeg(script);
    const Outcome outcome = RunProgram(TOOL_PROGRAM, CutArguments());
    QVERIFY2(outcome.code > 0, outcome.error);
    QVERIFY2(outcome.error.endsWith(
                 "No such file was made: " + QFile::encodeName(Path("out/cut.mp4")) + "\n"),
             outcome.error);
    QCOMPARE(Files(), QStringList());
}

void ToolJobTest::cancelLeavesNothing_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<int>("number"); // of the signal
    QTest::addColumn<bool>("toWorker");
    QTest::newRow("q") << QByteArray("q") << 0 << false;
    QTest::newRow("the recorder's q, many times") << QByteArray("q\r\n").repeated(50) << 0 << false;
    QTest::newRow("SIGINT") << QByteArray() << SIGINT << false;
    QTest::newRow("SIGTERM") << QByteArray() << SIGTERM << false;
    QTest::newRow("SIGHUP") << QByteArray() << SIGHUP << false;
    QTest::newRow("SIGTERM to the worker") << QByteArray() << SIGTERM << true;
}

void ToolJobTest::cancelLeavesNothing()
{
    QFETCH(QByteArray, typed);
    QFETCH(int, number);
    QFETCH(bool, toWorker);
    // One of its own children writes on.
    UseFfmpeg("cat \"$MOVIE\" >\"$OUT\"\n(echo $BASHPID >>\"$HERE/processes\"\n" + kWait + ")\n");
    const auto process = StartCut();
    QElapsedTimer time;
    time.start();
    if (!typed.isEmpty()) {
        process->write(typed);
    } else if (toWorker) {
        kill(ChildrenOf(process->processId()).value(0), number);
    } else {
        kill(static_cast<pid_t>(process->processId()), number);
    }
    const End end(*process);
    QVERIFY2(time.elapsed() < 2000, qPrintable(QString("after %1 ms").arg(time.elapsed())));
    QVERIFY2(end.code > 0 && end.text.contains("No such file was made"), end.text);
    QCOMPARE(Files(), QStringList());
    QVERIFY2(WaitFor([this] { return AllEnded(); }, 5000), "ffmpeg goes on");
}

// When the file is there and ffmpeg does not run yet: `tool` is asking how many bytes are free.
void ToolJobTest::signalBeforeTheStartLeavesNothing()
{
    UseFfmpeg(kWait + kWrite);
    const QByteArray free = QFile::encodeName(Path("free"));
    QCOMPARE(mkfifo(free.constData(), 0600), 0);
    QFile answer(Path("free"));
    QVERIFY(answer.open(QIODevice::ReadWrite | QIODevice::Unbuffered));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", STATVFS_PRELOAD);
    environment.insert("LUMENFOLD_FAKE_FREE_SPACE", Path("free"));
    process.setProcessEnvironment(environment);
    process.start(TOOL_PROGRAM, CutArguments());
    QVERIFY(process.waitForStarted());
    QVERIFY(WaitFor([this] { return !Files().isEmpty(); }));
    process.terminate();
    QVERIFY(answer.write("1000000000\n") > 0);
    const End end(process);
    QCOMPARE(Files(), QStringList());
    QVERIFY2(end.code > 0 && end.text.contains("No such file was made"), end.text);
}

void ToolJobTest::killedWorkerLeavesNothing()
{
    UseFfmpeg("cat \"$MOVIE\" >\"$OUT\"\nexec sleep 100\n");
    const auto process = StartCut();
    const QList<pid_t> children = ChildrenOf(process->processId());
    QCOMPARE(children.size(), 1);
    kill(children[0], SIGKILL);
    const End end(*process);
    QVERIFY2(end.code > 0 && end.text.contains("No such file was made"), end.text);
    QCOMPARE(Files(), QStringList());
    QVERIFY2(WaitFor([this] { return AllEnded(); }, 5000), "ffmpeg goes on");
}

void ToolJobTest::killedScriptLeavesNoProcess_data()
{
    QTest::addColumn<bool>("killsWorker");
    QTest::newRow("the script is killed") << false;
    QTest::newRow("the worker is killed") << true;
}

// ffmpeg may be a script, and what it has started is the program that works.
void ToolJobTest::killedScriptLeavesNoProcess()
{
    QFETCH(bool, killsWorker);
    UseFfmpeg("cat \"$MOVIE\" >\"$OUT\"\n(echo $BASHPID >>\"$HERE/processes\"\n"
              "touch \"$HERE/ready\"\n" +
              kWait + ")\n");
    const auto process = StartCut();
    QVERIFY(WaitFor([this] { return QFile::exists(Path("ready")); }));
    const pid_t worker = ChildrenOf(process->processId()).value(0);
    const pid_t victim = killsWorker ? worker : ChildrenOf(worker).value(0);
    QVERIFY(victim > 0);
    QCOMPARE(kill(victim, SIGKILL), 0);
    const End end(*process);
    QVERIFY2(end.code > 0 && end.text.contains("No such file was made"), end.text);
    QCOMPARE(Files(), QStringList());
    QVERIFY2(WaitFor([this] { return AllEnded(); }, 5000), "ffmpeg goes on");
}

void ToolJobTest::endOfTheRecorderDoesNotEndTheJob_data()
{
    QTest::addColumn<bool>("killed");
    QTest::newRow("its pipes are closed") << false;
    QTest::newRow("tool is killed") << true;
}

// A QProcess kills its program when the recorder ends.
void ToolJobTest::endOfTheRecorderDoesNotEndTheJob()
{
    QFETCH(bool, killed);
    UseFfmpeg(kWait + "for i in {1..1000}; do echo line $i; done\ncat \"$MOVIE\" >\"$OUT\"\n");
    auto process = StartCut();
    if (killed) {
        process.reset();
    } else {
        process->closeWriteChannel();
        process->closeReadChannel(QProcess::StandardOutput);
    }
    Go();
    QVERIFY2(WaitFor([this] { return Files() == QStringList{"cut.mp4"}; }),
             qPrintable(Files().join(", ")));
    QVERIFY(Content(Path("out/cut.mp4")) == Movie());
}

void ToolJobTest::recorderIsFreeBeforeItsWaitIsOver()
{
    UseFfmpeg(kWait + kWrite);
    const auto process = StartCut(HASTY_TOOL);
    QVERIFY2(process->waitForFinished(2900), "tool keeps the recorder waiting");
    const End end(*process);
    QVERIFY2(end.code == 0 && !TellsFailure(end.text), end.text);
    QCOMPARE(Files(), QStringList{"cut.mp4.part"});
    Go();
    QVERIFY2(WaitFor([this] { return Files() == QStringList{"cut.mp4"}; }),
             qPrintable(Files().join(", ")));
    QVERIFY(Content(Path("out/cut.mp4")) == Movie());
}

void ToolJobTest::secondJobRunsWhileTheFirstIsInTheBackground()
{
    UseFfmpeg(kWait + kWrite);
    QProcess process; // the same one twice, as in the recorder
    process.start(HASTY_TOOL, CutArguments("first.mp4"));
    QVERIFY(process.waitForFinished());
    process.start(HASTY_TOOL, CutArguments("second.mp4"));
    QVERIFY(process.waitForStarted());
    QVERIFY(WaitFor([this] { return Files().size() == 2; }));
    Go();
    QVERIFY2(WaitFor([this] {
                 return Files() == QStringList({"first.mp4", "second.mp4"});
             }),
             qPrintable(Files().join(", ")));
    QVERIFY(HasEnded(process));
    QCOMPARE(process.exitCode(), 0);
}

void ToolJobTest::twoJobsWithOneDestinationAreBothKept()
{
    UseFfmpeg(kWait + kWrite);
    const auto first = StartCut();
    const auto second = StartCut();
    QVERIFY(WaitFor([this] { return Files().size() == 2; }));
    Go();
    QVERIFY(HasEnded(*first) && HasEnded(*second));
    QCOMPARE(Files(), QStringList({"cut (1).mp4", "cut.mp4"}));
    QVERIFY(Content(Path("out/cut.mp4")) == Movie());
    QVERIFY(Content(Path("out/cut (1).mp4")) == Movie());
}

void ToolJobTest::relativeDestinationIsInTheWorkingDirectory()
{
    QStringList arguments = CutArguments();
    for (const char* name : {"cut.mp4", "a:b.mp4", "-y.mp4", "%d.mp4", "pipe:1"}) {
        arguments.last() = name;
        const Outcome outcome = RunProgram(TOOL_PROGRAM, arguments, Path("out"));
        QVERIFY2(outcome.code == 0, outcome.error);
        QVERIFY2(QFile::exists(Path("out/") + name), name);
    }
    QCOMPARE(Files().size(), 5);
}

QTEST_GUILESS_MAIN(ToolJobTest)
#include "tool_job_test.moc"
