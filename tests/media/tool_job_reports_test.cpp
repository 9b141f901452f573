// What a trim or join prints.
#include "tests/support/child_processes.h"
#include "tests/support/job_test.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

class ToolJobReportsTest : public JobTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void readerThatDoesNotReadDelaysNothing();
    void wordsOfFailureAreShownOnlyAfterAFailure();
    void damagedPacketDoesNotFailTheJoin();
    void silentFfmpegIsNoSilentTool();
    void ticksFollowTheWork();
    void fullDiskIsToldBeforeTheJob();
    void streamsMayBeClosed();
};

void ToolJobReportsTest::init()
{
    Prepare();
}

void ToolJobReportsTest::cleanup()
{
    Finish();
}

void ToolJobReportsTest::readerThatDoesNotReadDelaysNothing()
{
    UseFfmpeg("head -c 3M /dev/zero | tr '\\0' '\\n'\ncat \"$MOVIE\" >\"$OUT\"\n");
    // QProcess reads only when it is asked.
    const auto process = StartCut();
    QVERIFY2(WaitFor([this] { return Files() == QStringList{"cut.mp4"}; }, 10000),
             qPrintable(Files().join(", ")));
    QVERIFY(HasEnded(*process));
    QCOMPARE(process->exitCode(), 0);
}

void ToolJobReportsTest::wordsOfFailureAreShownOnlyAfterAFailure()
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
void ToolJobReportsTest::damagedPacketDoesNotFailTheJoin()
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

void ToolJobReportsTest::silentFfmpegIsNoSilentTool()
{
    UseFfmpeg(kWait + kWrite);
    const auto process = StartCut();
    ExpectHarmlessChunks(*process, 6);
    Go();
    QVERIFY(HasEnded(*process));
}

// A status line for every tenth of the work, and many more lines.
void ToolJobReportsTest::ticksFollowTheWork()
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
void ToolJobReportsTest::fullDiskIsToldBeforeTheJob()
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

void ToolJobReportsTest::streamsMayBeClosed()
{
    UseFfmpeg("echo words; echo words >&2\ncat \"$MOVIE\" >\"$OUT\"\n");
    const Outcome outcome =
        RunProgram("/bin/sh", QStringList{"-c", "exec \"$0\" \"$@\" <&- >&- 2>&-", TOOL_PROGRAM} +
                                  CutArguments());
    QCOMPARE(outcome.code, 0);
    QCOMPARE(Files(), QStringList{"cut.mp4"});
    QVERIFY2(Content(Path("out/cut.mp4")) == Movie(), "something else was written into the file");
}

QTEST_GUILESS_MAIN(ToolJobReportsTest)
#include "tool_job_reports_test.moc"
