#include "jobs/tool_runner.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

// Real child processes, with /bin/sh in place of the tool.
class ToolRunnerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_process = std::make_unique<QProcess>();
        m_process->setProcessChannelMode(QProcess::MergedChannels);
        m_text.clear();
        connect(m_process.get(), SIGNAL(readyRead()), this, SLOT(Read()));
    }

    void cleanup()
    {
        m_process->kill();
        m_process->waitForFinished();
    }

    void thePrefixIsTheQuotedToolBesideTheProgram()
    {
        const QString prefix = ToolPrefix();
        QVERIFY2(prefix.startsWith('"') && prefix.endsWith('"'), qPrintable(prefix));
        const QFileInfo tool(prefix.mid(1, prefix.size() - 2));
        QCOMPARE(tool.fileName(), QString("tool"));
        QVERIFY(tool.isAbsolute());
        QCOMPARE(tool.path(), QFileInfo(QCoreApplication::applicationFilePath()).path());
    }

    void theCommandLineIsLoggedAsQDebugQuotesIt()
    {
        const QString command = "/bin/sh -c \"exit 0\"";
        QTest::ignoreMessage(QtDebugMsg, "\"/bin/sh -c \\\"exit 0\\\"\"");
        RunTool(*m_process, command);
        QCOMPARE(m_process->exitCode(), 0);
    }

    // The log must show the command even if the tool never starts.
    void theCommandLineIsLoggedBeforeTheToolRuns()
    {
        static QProcess* process = nullptr;
        static QList<QProcess::ProcessState> states;
        process = m_process.get();
        states.clear();
        const QtMessageHandler before = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
                if (type == QtDebugMsg && text.contains("/bin/cat")) {
                    states << process->state();
                }
            });
        StartTool(*m_process, "/bin/cat");
        qInstallMessageHandler(before);
        QCOMPARE(states, QList<QProcess::ProcessState>{QProcess::NotRunning});
    }

    void aStartIsWaitedFor()
    {
        QVERIFY(StartTool(*m_process, "/bin/cat"));
        QCOMPARE(m_process->state(), QProcess::Running);
        QVERIFY(m_process->processId() > 0);
    }

    void theEndOfARunIsWaitedFor()
    {
        RunTool(*m_process, "/bin/sh -c \"sleep 0.2\"");
        QCOMPARE(m_process->state(), QProcess::NotRunning);
        QCOMPARE(m_process->exitStatus(), QProcess::NormalExit);
    }

    void quotedArgumentsKeepBlanksAndTrailingBlanksAreHarmless()
    {
        RunTool(*m_process, "/bin/sh -c \"printf '<%s>' $0\" \" \" ");
        QCOMPARE(m_text, QString("<>"));
        m_text.clear();
        RunTool(*m_process, "/usr/bin/printf \"<%s>\" \"a b\" \" \" c ");
        QCOMPARE(m_text, QString("<a b>< ><c>"));
    }

    void aPathWithADoubleQuoteBreaksTheCommandLine()
    {
        RunTool(*m_process, "/usr/bin/printf \"<%s>\" \"/v/a \"b\" c.mp4\"");
        QCOMPARE(m_text, QString("</v/a b c.mp4>"));
    }

    void lettersBeyondAsciiReachTheToolAsTheyAre()
    {
        RunTool(*m_process,
                QString::fromUtf8("/bin/sh -c \"printf %s '\u00e4\u6f22' | od -An -tx1\""));
        QCOMPARE(m_text, QString(" c3 a4 e6 bc a2\n"));
    }

    void bothStreamsReachTheSlotInsideTheWait()
    {
        RunTool(*m_process, "/bin/sh -c \"echo out; echo err >&2; sleep 0.1; printf late\"");
        QCOMPARE(m_text, QString("out\nerr\nlate"));
    }

    void textEndsAtTheFirstZeroByteAndIsLatin1()
    {
        RunTool(*m_process, "/usr/bin/printf \"a\\344\\0bc\"");
        QCOMPARE(m_text, QString::fromUtf8("a\u00e4"));
    }

    void aMissingToolFailsAtOnce()
    {
        QElapsedTimer time;
        time.start();
        QVERIFY(!StartTool(*m_process, "\"/no/such/tool\" -i x"));
        QVERIFY2(time.elapsed() < kToolWaitMs / 2, "the start was waited for in vain");
        QCOMPARE(m_process->error(), QProcess::FailedToStart);
        RunTool(*m_process, "\"/no/such/tool\" -i x");
        QCOMPARE(m_text, QString());
    }

    void quittingTypesThreeBytes()
    {
        QVERIFY(StartTool(*m_process, "/bin/sh -c \"echo ready; head -c 3 | od -An -tx1\""));
        QTRY_COMPARE(m_text, QString("ready\n"));
        AskToolToQuit(*m_process);
        QVERIFY2(m_process->waitForFinished(10000), "the quit command did not arrive");
        QCOMPARE(m_text, QString("ready\n 71 0d 0a\n"));
    }

    void quittingAToolThatNeverStartedDoesNothing()
    {
        QTest::failOnWarning(QRegularExpression("device not open"));
        AskToolToQuit(*m_process);
        QCOMPARE(ReadToolText(*m_process), QString());
        QCOMPARE(m_process->state(), QProcess::NotRunning);
    }

    void aRunningProcessRefusesASecondStartAndGoesOn()
    {
        QVERIFY(StartTool(*m_process, "/bin/cat"));
        const qint64 first = m_process->processId();
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        QVERIFY(StartTool(*m_process, "/bin/echo second"));
        QCOMPARE(m_process->processId(), first);
        QCOMPARE(m_process->state(), QProcess::Running);
    }

public Q_SLOTS:
    void Read() { m_text += ReadToolText(*m_process); }

private:
    std::unique_ptr<QProcess> m_process;
    QString m_text;
};

QTEST_GUILESS_MAIN(ToolRunnerTest)
#include "tool_runner_test.moc"
