#include "tests/window/job_tool.h"
#include "ui/scanui.h"

namespace {

const QString kFailure =
    "Merge failed, not an valid format, it's better to merge created mp4 files";

} // namespace

// What a merge reports on its way, and how it ends.
class MergeReportsTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        m_percents.clear();
        m_currents.clear();
        m_error = -1;
    }
    void cleanup() { FinishVideos(); }

    void anEmptyListRunsTheJoinAlone()
    {
        EnterMergePage();
        Listen();
        Call("btnSlotLayout4Merge");
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 1);
        QVERIFY(calls.first().startsWith("<-i><concat:><-acodec>"));
        QCOMPARE(m_percents, QList<int>{100});
        QCOMPARE(m_error, 0);
    }

    // 2 files make 60 ticks.
    void progressCountsChunksOverFilesAndJoin()
    {
        MakeList({"a.mp4", "b.mp4"});
        Listen();
        HearAll();
        SetJob("for n in 1 2 3; do say 'frame=1 frame=2'; done; printf made >\"${!#}\"\n");
        Press("Merge");
        QCOMPARE(m_percents, QList<int>({1, 3, 5, 6, 8, 10, 11, 13, 15, 100}));
        const QString from = SaveDirectory();
        QCOMPARE(m_currents.at(0), from + "/a.mp4");
        QCOMPARE(m_currents.at(3), from + "/b.mp4");
        QVERIFY2(m_currents.at(6).contains("/Merge_"), qPrintable(m_currents.at(6)));
        QCOMPARE(m_currents.last(), m_currents.at(6));
    }

    // An empty list makes 20 ticks.
    void ticksAboveTheTotalDoNotCountAndTellSuccessAgain()
    {
        EnterMergePage();
        Listen();
        HearAll();
        SetJob("for n in $(seq 22); do say frame=$n; done\n");
        Call("btnSlotLayout4Merge");
        QList<int> expected;
        for (int tick = 1; tick <= 20; ++tick) {
            expected << 5 * tick;
        }
        QCOMPARE(m_percents, expected + QList<int>({100, 100, 100}));
        QVERIFY(Boxes().texts.value(0).startsWith("Merge success"));
        QCOMPARE(Boxes().texts, QStringList(4, Boxes().texts.first()));
    }

    void aTickSplitBetweenTwoChunksOrInOtherLettersDoesNotCount()
    {
        MakeList({"a.mp4", "b.mp4"});
        Listen();
        HearAll();
        SetJob("for text in fram 'e=1\\n' FRAME=2; do say \"$text\"; done\n"
               "printf made >\"${!#}\"\n");
        Press("Merge");
        QCOMPARE(m_percents, QList<int>{100});
    }

    void aCancelInAConversionStopsAfterThatFileAndTellsFailureLast()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        Listen();
        CancelAt("m_pChangeTSProcess");
        SetJob("printf part >\"${!#}\"; echo frame=1\n"
               "until [[ $key == q ]]; do read -r -t 0.1 -N 1 key; echo frame=2; done\n"
               "printf q >>\"$here/keys\"\n");
        Press("Merge");
        QCOMPARE(Calls().size(), 1);
        QCOMPARE(ReadFile(BesideProgram("keys")), QByteArray("q"));
        QCOMPARE(Results(), QStringList());
        QCOMPARE(m_error, 2);
        QCOMPARE(Boxes().texts.size(), 2);
        QVERIFY(Boxes().texts.first().startsWith("Merge success"));
        QCOMPARE(Boxes().texts.last(), kFailure);
    }

    void aCancelInTheJoinRemovesTheResultAndTellsSuccess()
    {
        MakeList({"a.mp4", "b.mp4"});
        Listen();
        CancelAt("m_pMergeProcess");
        SetJob("printf part >\"${!#}\"; [[ $2 == concat:* ]] || exit 0; echo frame=1\n"
               "until [[ $key == q ]]; do read -r -t 0.1 -N 1 key; echo frame=2; done\n");
        Press("Merge");
        QCOMPARE(Results(), QStringList());
        QCOMPARE(m_error, 0);
        QCOMPARE(Boxes().texts.size(), 1);
        QVERIFY(Boxes().texts.first().startsWith("Merge success"));
    }

    void theProgressDialogStandsOverTheWindowWhileTheToolRuns()
    {
        MakeList({"a.mp4", "b.mp4"});
        QList<QRect> places;
        bool modal = false;
        const auto look = [&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* dialog = qobject_cast<SCANUI*>(widget)) {
                    places << dialog->geometry();
                    modal = modal || dialog->isModal();
                }
            }
        };
        Hear("m_pChangeTSProcess", look);
        Hear("m_pMergeProcess", look);
        SetJob("say frame=1; printf made >\"${!#}\"\n");
        Press("Merge");
        const QRect place(Window().x() + 250, Window().y() + 150, 500, 250);
        QCOMPARE(places, QList<QRect>({place, place, place}));
        QVERIFY(!modal);
    }

    // At the last report the folder has the result and nothing else, or nothing if the merge
    // failed.
    void theFolderIsTidyBeforeTheLastReport_data()
    {
        QTest::addColumn<QByteArray>("says");
        QTest::addColumn<int>("files");
        QTest::newRow("good") << QByteArray("say frame=1;") << 1;
        QTest::newRow("failed") << QByteArray("say Invalid data;") << 0;
    }

    void theFolderIsTidyBeforeTheLastReport()
    {
        QFETCH(QByteArray, says);
        MakeList({"a.mp4", "b.mp4"});
        Listen();
        HearAll();
        m_look = true;
        SetJob(says + "printf made >\"${!#}\"\n");
        Press("Merge");
        m_look = false;
        QTEST(int(m_found.size()), "files");
        QVERIFY2(m_found.filter(".ts").isEmpty(), qPrintable(m_found.join(' ')));
    }

    // Destination and current file of the report in which the job ends.
    void theLastReportNamesTheResultTwice()
    {
        MakeList({"a.mp4", "b.mp4"});
        QSignalSpy reports(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)));
        Press("Merge");
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports.first(), QVariantList({100, FirstResult(), FirstResult(), 0}));
    }

    // Every conversion names the result as its destination, as the join does.
    void everyReportNamesTheResultAsDestination()
    {
        MakeList({"a.mp4", "b.mp4"});
        QSignalSpy reports(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)));
        HearAll();
        SetJob("say frame=1; printf made >\"${!#}\"\n");
        Press("Merge");
        QCOMPARE(reports.size(), 4);
        for (const QVariantList& report : reports) {
            QCOMPARE(report.at(2).toString(), FirstResult());
            QCOMPARE(report.at(3).toInt(), 0);
        }
    }

    void aCancelIsRepeatedWithEveryChunk()
    {
        MakeList({"a.mp4", "b.mp4"});
        QFile::remove(BesideProgram("keys"));
        Hear("m_pChangeTSProcess", [] { DRUI::m_bisFinished = true; });
        SetJob("for n in 1 2 3 4; do say frame=$n; done\n"
               "read -r -t 5 -N 9 keys; printf '%s' \"$keys\" >\"$here/keys\"\n");
        Press("Merge");
        QCOMPARE(ReadFile(BesideProgram("keys")), QByteArray("q\r\nq\r\nq\r\n")); // 2, 3 and 4
    }

public Q_SLOTS:
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the signal's signature
    void Note(int percent, QString current, QString /*destination*/, int error)
    {
        m_percents << percent;
        m_currents << current;
        m_error = error;
        if (m_look) {
            m_found = Results();
        }
    }
    void Cancel() { DRUI::m_bisFinished = true; }

private:
    void HearAll()
    {
        Hear("m_pChangeTSProcess");
        Hear("m_pMergeProcess");
    }

    void Listen()
    {
        Calls();
        QVERIFY(connect(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)), this,
                        SLOT(Note(int, QString, QString, int))));
    }

    // The user confirms at the first output of this process.
    void CancelAt(const char* process)
    {
        QFile::remove(BesideProgram("keys"));
        QVERIFY(connect(Child<QProcess>(process), SIGNAL(readyRead()), this, SLOT(Cancel())));
    }

    QList<int> m_percents;
    QStringList m_currents;
    QStringList m_found; // in the destination, with the last report
    bool m_look = false;
    int m_error = -1;
};

QTEST_MAIN(MergeReportsTest)
#include "merge_reports_test.moc"
