// What `tool` does while ffmpeg looks at movies for a conversion or a join.
#include "tests/support/job_test.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <memory>

// Each test runs for a conversion and for a join that need ffmpeg's answer.
class ToolMovieQuestionTest : public JobTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void cancelIsHeardMeanwhile_data() { AddKinds(); }
    void cancelIsHeardMeanwhile();
    void missingAnswerIsAFailureInTime_data() { AddKinds(); }
    void missingAnswerIsAFailureInTime();
    void emptyAnswerIsAFailure_data() { AddKinds(); }
    void emptyAnswerIsAFailure();
    void killedToolLeavesNobodyAsking_data() { AddKinds(); }
    void killedToolLeavesNobodyAsking();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    static void AddKinds();
    QStringList Convert(const QString& source, const QString& part) const
    {
        return {"-i",   Path(source), "-vcodec",          "copy",    "-acodec",
                "copy", "-vbsf",      "h264_mp4toannexb", Path(part)};
    }
    QStringList Arguments() const;
    void ExpectNothingLeft() const;
};

void ToolMovieQuestionTest::AddKinds()
{
    QTest::addColumn<bool>("joins");
    QTest::newRow("conversion") << false;
    QTest::newRow("join") << true;
}

// The conversions before the join do without ffmpeg.
void ToolMovieQuestionTest::init()
{
    Prepare();
    QCOMPARE(MakeMovie({"-i", m_ffmpeg->Movie(), "-vf", "scale=80:60", Path("other.mp4")}),
             QByteArray());
    QVERIFY(Write(Path("text.mp4"), "no movie"));
    int number = 0;
    for (const char* source : {"movie.mp4", "other.mp4"}) {
        const QString part = QString("%1.ts").arg(++number);
        const Outcome outcome = RunProgram(TOOL_PROGRAM, Convert(source, part));
        QVERIFY2(outcome.code == 0, outcome.error);
    }
}

void ToolMovieQuestionTest::cleanup()
{
    Finish();
}

QStringList ToolMovieQuestionTest::Arguments() const
{
    QFETCH(bool, joins);
    return joins ? QStringList{"-i",
                               "concat:" + Path("1.ts") + '|' + Path("2.ts") + '|',
                               "-acodec",
                               "copy",
                               "-vcodec",
                               "copy",
                               "-absf",
                               "aac_adtstoasc",
                               Path("out/joined.mp4")}
                 : Convert("text.mp4", "out/3.ts");
}

void ToolMovieQuestionTest::ExpectNothingLeft() const
{
    QVERIFY2(WaitFor([this] { return AllEnded(); }, 5000), "ffmpeg goes on");
    QCOMPARE(Files(), QStringList());
}

void ToolMovieQuestionTest::cancelIsHeardMeanwhile()
{
    UseFfmpeg(kWait);
    const auto process = Start(TOOL_PROGRAM, Arguments());
    ExpectHarmlessChunks(*process, 5);
    QElapsedTimer time;
    time.start();
    process->write("q\r\n");
    const End end(*process);
    QVERIFY2(time.elapsed() < 1000, qPrintable(QString("after %1 ms").arg(time.elapsed())));
    QVERIFY2(end.code > 0, end.text);
    ExpectNothingLeft();
}

// Later the recorder would have told success, and its process would be busy with this one.
void ToolMovieQuestionTest::missingAnswerIsAFailureInTime()
{
    UseFfmpeg(kWait);
    const auto process = Start(HASTY_TOOL, Arguments());
    QVERIFY2(process->waitForFinished(2900), "tool keeps the recorder waiting");
    const End end(*process);
    QVERIFY2(end.code > 0 && TellsFailure(end.text), end.text);
    ExpectNothingLeft();
}

void ToolMovieQuestionTest::emptyAnswerIsAFailure()
{
    QVERIFY(m_ffmpeg->Use("exit 0\n"));
    const auto process = Start(TOOL_PROGRAM, Arguments());
    const End end(*process);
    QVERIFY2(end.code > 0 && TellsFailure(end.text), end.text);
    ExpectNothingLeft();
}

void ToolMovieQuestionTest::killedToolLeavesNobodyAsking()
{
    UseFfmpeg(kWait);
    const auto process = Start(TOOL_PROGRAM, Arguments());
    process->kill();
    QVERIFY(HasEnded(*process));
    ExpectNothingLeft();
}

QTEST_GUILESS_MAIN(ToolMovieQuestionTest)
#include "tool_movie_question_test.moc"
