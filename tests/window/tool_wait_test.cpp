#include "jobs/tool_runner.h"
#include "tests/window/job_tool.h"

#include <QElapsedTimer>

// A tool that runs longer than the window waits for it. Linked with a short wait for every day, and
// with the product's for ./test --long.
class ToolWaitTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void aCutPastTheWaitCountsAsFinished()
    {
        SelectRange("a.mp4", 1, 2);
        SetJob("echo frame=1; read -r -t 100 -N 1; printf made >\"${!#}\"\n");
        PressAndExpectTheWholeWait("Cut");
        QCOMPARE(Boxes().texts,
                 QStringList{"Cut success, file path is " + Target() + "/Cut_a.mp4 "});
        auto* process = Child<QProcess>("m_pCutProcess");
        QCOMPARE(process->state(), QProcess::Running);
        process->write("x");
        QVERIFY(process->waitForFinished());
        QCOMPARE(Results(), QStringList{"Cut_a.mp4"});
    }

    // Past the wait nobody would delete its file.
    void aCancelledCutThatWouldOutlastTheWaitLeavesNoFile()
    {
        SelectRange("a.mp4", 1, 2);
        SetJob("key=; until [[ $key == [qx] ]]; do echo frame=1; read -r -t 0.1 -N 1 key; done\n"
               "[[ $key == q ]] || printf made >\"${!#}\"\n");
        auto* process = Child<QProcess>("m_pCutProcess");
        connect(process, &QProcess::readyRead, this, [] { DRUI::m_bisFinished = true; });
        QElapsedTimer time;
        time.start();
        Press("Cut");
        QVERIFY2(time.hasExpired(kToolWaitMs - 2500), "the tool did not run as long as it might");
        process->write("x");
        QTRY_COMPARE(process->state(), QProcess::NotRunning);
        QCOMPARE(Results(), QStringList());
        QVERIFY2(Boxes().texts.last().startsWith("Clip failed"), qPrintable(Boxes().texts.last()));
    }

    void aMergePastTheWaitCountsAsFinishedAndTheJobGoesOn_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QByteArray>("process");
        QTest::newRow("the last conversion")
            << QByteArray("*b.mp4") << QByteArray("m_pChangeTSProcess");
        QTest::newRow("the join") << QByteArray("concat:*") << QByteArray("m_pMergeProcess");
    }

    void aMergePastTheWaitCountsAsFinishedAndTheJobGoesOn()
    {
        QFETCH(QByteArray, input);
        QFETCH(QByteArray, process);
        MakeList({"a.mp4", "b.mp4"});
        Calls();
        SetJob("[[ $2 == " + input + " ]] && read -r -t 100 -N 1\nprintf made >\"${!#}\"\n");
        PressAndExpectTheWholeWait("Merge");
        QCOMPARE(Calls().size(), 3);
        QCOMPARE(Boxes().texts.size(), 1);
        QVERIFY2(Boxes().texts.first().startsWith("Merge success, file path is "),
                 qPrintable(Boxes().texts.first()));
        auto* running = Child<QProcess>(process.constData());
        QCOMPARE(running->state(), QProcess::Running);
        const QStringList before = Results();
        QVERIFY2(before.filter(".ts").isEmpty(), "a stream is left behind");
        running->write("x");
        QVERIFY(running->waitForFinished());
        // The tool is not stopped and still writes its file.
        QCOMPARE(Results().size(), before.size() + 1);
    }

private:
    void PressAndExpectTheWholeWait(const QString& button)
    {
        QElapsedTimer time;
        time.start();
        Press(button);
        QVERIFY2(time.elapsed() >= kToolWaitMs - 100 && time.elapsed() < kToolWaitMs + 15000,
                 qPrintable(QString("the wait lasted %1 ms instead of %2")
                                .arg(time.elapsed())
                                .arg(kToolWaitMs)));
    }
};

QTEST_MAIN(ToolWaitTest)
#include "tool_wait_test.moc"
