// How a trim or join is run: its file is whole or not there, whatever happens to the processes.
#include "tests/support/child_processes.h"
#include "tests/support/ffmpeg_stand_in.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <memory>

class ToolJobTest : public QObject
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
    void killedWorkerLeavesNothing();
    void endOfTheRecorderDoesNotEndTheJob_data();
    void endOfTheRecorderDoesNotEndTheJob();
    void recorderIsFreeBeforeItsWaitIsOver();
    void secondJobRunsWhileTheFirstIsInTheBackground();
    void twoJobsWithOneDestinationAreBothKept();
    void readerThatDoesNotReadDelaysNothing();
    void wordsOfFailureAreShownOnlyAfterAFailure();
    void damagedPacketDoesNotFailTheJoin();
    void silentFfmpegIsNoSilentTool();
    void ticksFollowTheWork();
    void fullDiskIsToldBeforeTheJob();
    void streamsMayBeClosed();
    void relativeDestinationIsInTheWorkingDirectory();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Path(const QString& name) const { return m_ffmpeg->Path(name); }
    QStringList Files() const { return m_ffmpeg->Results(); }
    void UseFfmpeg(const QByteArray& script) const { QVERIFY(m_ffmpeg->Use(script)); }
    void Go() const { m_ffmpeg->Go(); }
    bool AllEnded() const { return m_ffmpeg->AllEnded(); }
    QStringList CutArguments(const QString& name = "cut.mp4") const
    {
        return m_ffmpeg->CutArguments(name);
    }
    QByteArray Movie() const { return Content(m_ffmpeg->Movie()); }
    // Starts `tool` for a cut and waits until ffmpeg runs.
    std::unique_ptr<QProcess> StartCut(const QString& tool = TOOL_PROGRAM) const;

    std::unique_ptr<FfmpegStandIn> m_ffmpeg;
};

namespace {

const QByteArray kWrite = FfmpegStandIn::kWrite;
const QByteArray kWait = FfmpegStandIn::kWait;

bool TellsFailure(const QByteArray& text)
{
    return text.contains("No such file") || text.contains("Invalid data");
}

} // namespace

void ToolJobTest::init()
{
    m_ffmpeg = std::make_unique<FfmpegStandIn>();
    const QByteArray problem = m_ffmpeg->MakeTheMovie();
    QVERIFY2(problem.isEmpty(), problem);
}

void ToolJobTest::cleanup()
{
    Go(); // what a failed test has left waiting
    QVERIFY2(WaitFor([this] { return AllEnded(); }), "ffmpeg goes on");
    m_ffmpeg.reset();
}

std::unique_ptr<QProcess> ToolJobTest::StartCut(const QString& tool) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->start(tool, CutArguments());
    if (!process->waitForStarted() || !WaitFor([this] { return m_ffmpeg->HasStarted(); })) {
        qWarning("ffmpeg does not start: %s", process->readAll().constData());
    }
    return process;
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

void ToolJobTest::readerThatDoesNotReadDelaysNothing()
{
    UseFfmpeg("head -c 3M /dev/zero | tr '\\0' '\\n'\ncat \"$MOVIE\" >\"$OUT\"\n");
    // QProcess reads only when it is asked.
    const auto process = StartCut();
    QVERIFY2(WaitFor([this] { return Files() == QStringList{"cut.mp4"}; }, 10000),
             qPrintable(Files().join(", ")));
    QVERIFY(HasEnded(*process));
    QCOMPARE(process->exitCode(), 0);
}

void ToolJobTest::wordsOfFailureAreShownOnlyAfterAFailure()
{
    const QByteArray words = "echo 'Invalid data found when processing input' >&2\n"
                             "echo 'x: No such file or directory' >&2\n";
    UseFfmpeg(words + kWrite);
    const Outcome good = RunProgram(TOOL_PROGRAM, CutArguments());
    QCOMPARE(good.code, 0);
    QVERIFY2(!TellsFailure(good.error), good.error);
    UseFfmpeg(words + "exit 1\n");
    const Outcome bad = RunProgram(TOOL_PROGRAM, CutArguments("other.mp4"));
    QCOMPARE(bad.code, 1);
    QVERIFY2(bad.error.contains("Invalid data found") && bad.error.contains("x: No such file"),
             bad.error);
}

// ffmpeg ends well and says "Invalid data" on the way; the recorder would delete the good file.
void ToolJobTest::damagedPacketDoesNotFailTheJoin()
{
    QByteArray movie = Movie();
    const auto middle = movie.indexOf("mdat") + (movie.size() - movie.indexOf("mdat")) / 2;
    movie.replace(middle, 3000, QByteArray(3000, '\xff'));
    QVERIFY(Write(Path("damaged.mp4"), movie));
    const Outcome plain = RunProgram("ffmpeg", {"-i", Path("damaged.mp4"), "-f", "null", "-"});
    QVERIFY2(plain.code == 0 && plain.error.contains("Invalid data"), plain.error);
    const QByteArray problem =
        MakeMovie({"-i", m_ffmpeg->Movie(), "-vf", "scale=80:60", Path("other.mp4")});
    QVERIFY2(problem.isEmpty(), problem);
    const QStringList parts = {Path("1.ts"), Path("2.ts")};
    for (const QString& part : parts) {
        const QString source = Path(part == parts.first() ? "damaged.mp4" : "other.mp4");
        const Outcome conversion =
            RunProgram(TOOL_PROGRAM, {"-i", source, "-vcodec", "copy", "-acodec", "copy", "-vbsf",
                                      "h264_mp4toannexb", part});
        QVERIFY2(conversion.code == 0, conversion.error);
    }
    const Outcome join = RunProgram(TOOL_PROGRAM, {"-i", "concat:" + parts.join('|') + '|',
                                                   "-acodec", "copy", "-vcodec", "copy", "-absf",
                                                   "aac_adtstoasc", Path("out/joined.mp4")});
    QVERIFY2(join.code == 0, join.error);
    QVERIFY2(!TellsFailure(join.error), join.error);
    QCOMPARE(Files(), QStringList{"joined.mp4"});
    QVERIFY2(DurationIn(RunProgram(TOOL_PROGRAM, {"-i", Path("out/joined.mp4")}).error) > 7,
             "a part is missing");
}

// The recorder passes a cancel on when it reads output.
void ToolJobTest::silentFfmpegIsNoSilentTool()
{
    UseFfmpeg(kWait + kWrite);
    const auto process = StartCut();
    QElapsedTimer time;
    time.start();
    int chunks = 0;
    QByteArray text;
    while (time.elapsed() < 1500 && process->waitForReadyRead(1000)) {
        text += process->readAll();
        ++chunks;
    }
    QVERIFY2(chunks >= 6, qPrintable(QString("%1 chunks in 1.5 s").arg(chunks)));
    QVERIFY2(!text.contains("frame=") && !TellsFailure(text), text);
    Go();
    QVERIFY(HasEnded(*process));
}

// A status line for every tenth of the work, and many more lines.
void ToolJobTest::ticksFollowTheWork()
{
    UseFfmpeg("for i in {0..39}; do\n"
              "  printf 'frame=%5d fps=1 size=1kB time=00:00:0%d.%d0 speed=1x\\r' $i $((i / 10)) "
              "$((i % 10))\n"
              "  sleep 0.05\n"
              "done\n" +
              kWrite);
    const auto process = StartCut();
    int ticks = 0;
    QByteArray last;
    while (process->waitForReadyRead()) {
        const QByteArray chunk = process->readAll();
        ticks += chunk.contains("frame=") ? 1 : 0;
        last = chunk.contains("frame=") ? chunk : last;
    }
    QVERIFY(HasEnded(*process));
    QCOMPARE(process->exitCode(), 0);
    QVERIFY2(ticks >= 14 && ticks <= 19, qPrintable(QString("%1 ticks of 20").arg(ticks)));
}

// A library tells `tool` how many bytes are free.
void ToolJobTest::fullDiskIsToldBeforeTheJob()
{
    UseFfmpeg(kWrite);
    const qint64 size = Movie().size();
    qputenv("LD_PRELOAD", STATVFS_PRELOAD);
    qputenv("LUMENFOLD_FAKE_FREE_SPACE", QFile::encodeName(Path("free")));
    QVERIFY(Write(Path("free"), QByteArray::number(size / 3)));
    const Outcome full = RunProgram(TOOL_PROGRAM, CutArguments());
    QVERIFY(Write(Path("free"), QByteArray::number(size * 2)));
    const Outcome roomy = RunProgram(TOOL_PROGRAM, CutArguments());
    qunsetenv("LD_PRELOAD");
    qunsetenv("LUMENFOLD_FAKE_FREE_SPACE");
    QVERIFY2(full.code > 0 && full.error.contains("no room"), full.error);
    QVERIFY2(full.error.contains("No such file was made"), full.error);
    QCOMPARE(full.error.count('\n'), 2);
    QVERIFY2(roomy.code == 0, roomy.error);
    QCOMPARE(Files(), QStringList{"cut.mp4"});
}

void ToolJobTest::streamsMayBeClosed()
{
    UseFfmpeg("echo words; echo words >&2\ncat \"$MOVIE\" >\"$OUT\"\n");
    const Outcome outcome =
        RunProgram("/bin/sh", QStringList{"-c", "exec \"$0\" \"$@\" <&- >&- 2>&-", TOOL_PROGRAM} +
                                  CutArguments());
    QCOMPARE(outcome.code, 0);
    QCOMPARE(Files(), QStringList{"cut.mp4"});
    QVERIFY2(Content(Path("out/cut.mp4")) == Movie(), "something else was written into the file");
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
