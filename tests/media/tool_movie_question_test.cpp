// What `tool` does while ffmpeg looks at movies for a conversion or a join.
#include "tests/support/ffmpeg_stand_in.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <memory>

namespace {

const QByteArray kWait = FfmpegStandIn::kWait;

bool TellsFailure(const QByteArray& text)
{
    return text.contains("No such file") || text.contains("Invalid data");
}

} // namespace

// Each test runs for a conversion and for a join that need ffmpeg's answer.
class ToolMovieQuestionTest : public QObject
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
    QString Path(const QString& name) const { return m_ffmpeg->Path(name); }
    QStringList Convert(const QString& source, const QString& part) const
    {
        return {"-i",   Path(source), "-vcodec",          "copy",    "-acodec",
                "copy", "-vbsf",      "h264_mp4toannexb", Path(part)};
    }
    QStringList Arguments() const;
    std::unique_ptr<QProcess> Start(const QString& tool) const;
    void ExpectNothingLeft() const;

    std::unique_ptr<FfmpegStandIn> m_ffmpeg;
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
    m_ffmpeg = std::make_unique<FfmpegStandIn>();
    QCOMPARE(m_ffmpeg->MakeTheMovie(), QByteArray());
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
    m_ffmpeg.reset();
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

// Returns when ffmpeg has been asked.
std::unique_ptr<QProcess> ToolMovieQuestionTest::Start(const QString& tool) const
{
    auto process = std::make_unique<QProcess>();
    process->setProcessChannelMode(QProcess::MergedChannels);
    process->start(tool, Arguments());
    if (!process->waitForStarted() || !WaitFor([this] { return m_ffmpeg->HasStarted(); })) {
        qWarning("ffmpeg is not asked: %s", process->readAll().constData());
    }
    return process;
}

void ToolMovieQuestionTest::ExpectNothingLeft() const
{
    QVERIFY2(WaitFor([this] { return m_ffmpeg->AllEnded(); }, 5000), "ffmpeg goes on");
    QCOMPARE(m_ffmpeg->Results(), QStringList());
}

// The recorder passes a cancel on when it reads output.
void ToolMovieQuestionTest::cancelIsHeardMeanwhile()
{
    QVERIFY(m_ffmpeg->Use(kWait));
    const auto process = Start(TOOL_PROGRAM);
    QElapsedTimer time;
    time.start();
    int chunks = 0;
    QByteArray text;
    while (time.elapsed() < 1500 && process->waitForReadyRead(1000)) {
        text += process->readAll();
        ++chunks;
    }
    QVERIFY2(chunks >= 5, qPrintable(QString("%1 chunks in 1.5 s").arg(chunks)));
    QVERIFY2(!text.contains("frame=") && !TellsFailure(text), text);
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
    QVERIFY(m_ffmpeg->Use(kWait));
    const auto process = Start(HASTY_TOOL);
    QVERIFY2(process->waitForFinished(2900), "tool keeps the recorder waiting");
    const End end(*process);
    QVERIFY2(end.code > 0 && TellsFailure(end.text), end.text);
    ExpectNothingLeft();
}

void ToolMovieQuestionTest::emptyAnswerIsAFailure()
{
    QVERIFY(m_ffmpeg->Use("exit 0\n"));
    const auto process = Start(TOOL_PROGRAM);
    const End end(*process);
    QVERIFY2(end.code > 0 && TellsFailure(end.text), end.text);
    ExpectNothingLeft();
}

void ToolMovieQuestionTest::killedToolLeavesNobodyAsking()
{
    QVERIFY(m_ffmpeg->Use(kWait));
    const auto process = Start(TOOL_PROGRAM);
    process->kill();
    QVERIFY(HasEnded(*process));
    ExpectNothingLeft();
}

QTEST_GUILESS_MAIN(ToolMovieQuestionTest)
#include "tool_movie_question_test.moc"
