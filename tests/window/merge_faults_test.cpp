#include "tests/window/job_tool.h"
#include "ui/scanui.h"

// What a merge does when something goes wrong. All of these end with the success message, because
// the last report carries the result of the conversions, which only a cancel changes.
class MergeFaultsTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeList({"a.mp4", "b.mp4"});
        Hear("m_pChangeTSProcess");
        Hear("m_pMergeProcess");
    }
    void cleanup() { FinishVideos(); }

    void whatFailsAMergeRemovesItsResult_data()
    {
        QTest::addColumn<QByteArray>("job");
        const QByteArray make = "printf made >\"${!#}\"\n";
        QTest::newRow("invalid data in the first conversion")
            << "[[ $2 == *a.mp4 ]] && say 'Invalid data found'\n" + make;
        QTest::newRow("invalid data in the last conversion")
            << "[[ $2 == *b.mp4 ]] && say 'Invalid data found'\n" + make;
        QTest::newRow("late in a conversion")
            << "say frame=1; say frame=2; " + make +
                   "[[ $2 == *a.mp4 ]] && printf 'a.mp4: Invalid data'\n";
        QTest::newRow("invalid data in the join")
            << "[[ $2 == concat:* ]] && say 'Invalid data found'\n" + make;
        QTest::newRow("late in the join") << "say frame=1; say frame=2; " + make +
                                                 "[[ $2 == concat:* ]] && printf 'Invalid data'\n";
        QTest::newRow("a missing stream in the join")
            << "[[ $2 == concat:* ]] && say 'concat:1.ts: No such file or directory'\n" + make;
    }

    void whatFailsAMergeRemovesItsResult()
    {
        QFETCH(QByteArray, job);
        SetJob(job);
        Merge();
        QCOMPARE(Calls().size(), 3); // only a cancel stops it
        QCOMPARE(Results(), QStringList());
        ToldSuccess();
    }

    void whatIsNoFaultKeepsTheResult_data()
    {
        QTest::addColumn<QByteArray>("says");
        QTest::addColumn<QByteArray>("input");
        QTest::newRow("a missing file in a conversion")
            << QByteArray("say 'No such file or directory'") << QByteArray("*a.mp4");
        QTest::newRow("split in a conversion")
            << QByteArray("say Invalid; say ' data\\n'") << QByteArray("*a.mp4");
        QTest::newRow("split in the join")
            << QByteArray("say 'Invalid da'; say 'ta\\n'; say 'No such'; say ' file\\n'")
            << QByteArray("concat:*");
        QTest::newRow("other letters in the join")
            << QByteArray("say 'invalid data, no such file'") << QByteArray("concat:*");
    }

    void whatIsNoFaultKeepsTheResult()
    {
        QFETCH(QByteArray, says);
        QFETCH(QByteArray, input);
        SetJob("[[ $2 == " + input + " ]] && { " + says + "; }\nprintf made >\"${!#}\"\n");
        Merge();
        QCOMPARE(Results().size(), 1);
        ToldSuccess();
    }

    void aMissingToolTellsSuccess()
    {
        QFile::remove(BesideProgram("tool"));
        Merge();
        QCOMPARE(Results(), QStringList());
        ToldSuccess();
    }

    void aToolThatCrashesInAConversionLetsTheMergeGoOn()
    {
        SetJob("printf half >\"${!#}\"\n[[ $2 == *a.mp4 ]] && { say frame=1; kill -9 $$; }\n");
        Merge();
        QCOMPARE(Calls().size(), 3);
        QCOMPARE(Results().size(), 1); // of the files that could be converted
        ToldSuccess();
    }

    void aToolThatCrashesInTheJoinLeavesWhatItWrote()
    {
        SetJob("printf half >\"${!#}\"\n[[ $2 == concat:* ]] && { say frame=1; kill -9 $$; }\n");
        Merge();
        QCOMPARE(Results().size(), 1);
        QCOMPARE(ReadFile(Target() + '/' + Results().first()), QByteArray("half"));
        ToldSuccess();
    }

    void aDestinationThatVanishesTellsSuccess_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::newRow("in the first conversion") << QByteArray("*a.mp4");
        QTest::newRow("in the last conversion") << QByteArray("*b.mp4");
        QTest::newRow("in the join") << QByteArray("concat:*");
    }

    void aDestinationThatVanishesTellsSuccess()
    {
        QFETCH(QByteArray, input);
        const QString folder = Target() + "/vanishing";
        QVERIFY(QDir().mkdir(folder));
        Boxes().directory = folder;
        SetJob("[[ $2 == " + input + " ]] && rm -r \"${!#%/*}\"\nprintf made >\"${!#}\"\n");
        Merge();
        QCOMPARE(Calls().size(), 3);
        QVERIFY2(!QFile::exists(folder), "the folder was made again");
        ToldSuccess();
    }

    // Nobody can create files in /proc, not even root.
    void aDestinationThatCannotBeWrittenToTellsSuccess()
    {
        if (!QFile::exists("/proc/self")) {
            QSKIP("no folder that nobody can write into");
        }
        Boxes().directory = "/proc";
        Merge();
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 3);
        QVERIFY2(calls.at(2).contains("<concat:/proc/1.ts|/proc/2.ts|>"), qPrintable(calls.at(2)));
        ToldSuccess();
    }

private:
    void Merge()
    {
        QSignalSpy reports(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)));
        Press("Merge");
        QVERIFY(!reports.isEmpty());
        QCOMPARE(reports.last().at(0).toInt(), 100);
        QCOMPARE(reports.last().at(3).toInt(), 0);
        for (const char* name : {"a.mp4", "b.mp4"}) {
            QCOMPARE(ReadFile(SaveDirectory() + '/' + name), QByteArray("00:00:30\n"));
        }
    }

    void ToldSuccess()
    {
        QCOMPARE(Boxes().texts.size(), 1);
        QVERIFY2(Boxes().texts.first().startsWith("Merge success, file path is "),
                 qPrintable(Boxes().texts.first()));
    }
};

QTEST_MAIN(MergeFaultsTest)
#include "merge_faults_test.moc"
