#include "jobs/merge_command.h"

#include <QProcess>
#include <QTest>

class MergeCommandTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theConversionEndsInABlank()
    {
        QCOMPARE(ChangeToTSCommand("\"/app/tool\"", "/F/a b.mp4", "/D/1.ts"),
                 QString("\"/app/tool\" -i \"/F/a b.mp4\" -vcodec copy -acodec copy -vbsf "
                         "h264_mp4toannexb \"/D/1.ts\" "));
    }

    void everyStreamIsFollowedByTheSeparatorTheLastOneToo()
    {
        QCOMPARE(ConcatCommand("\"/app/tool\"", {"/D/1.ts", "/D/2.ts"}, "/D/Merge_x.mp4"),
                 QString("\"/app/tool\" -i \"concat:/D/1.ts|/D/2.ts|\" -acodec copy -vcodec copy "
                         "-absf aac_adtstoasc \"/D/Merge_x.mp4\""));
    }

    void theToolGetsOneArgumentForTheWholeList()
    {
        QCOMPARE(
            QProcess::splitCommand(ConcatCommand("\"/a b/tool\"", {"/D d/1.ts"}, "/D d/x.mp4")),
            QStringList({"/a b/tool", "-i", "concat:/D d/1.ts|", "-acodec", "copy", "-vcodec",
                         "copy", "-absf", "aac_adtstoasc", "/D d/x.mp4"}));
    }

    void nothingToJoinIsAnEmptyList()
    {
        QVERIFY(ConcatCommand("t", {}, "o").startsWith("t -i \"concat:\" -acodec"));
    }

    void theFilesOfAMergeAreNamedByTheTimeAndByTheirNumber()
    {
        QCOMPARE(MergeDestination("/D", QDateTime(QDate(2018, 3, 5), QTime(14, 7, 9))),
                 QString("/D/Merge_2018-03-05 14-07-09.mp4"));
        QCOMPARE(IntermediatePath("/D", 1), QString("/D/1.ts"));
        QCOMPARE(IntermediatePath("/D", 20), QString("/D/20.ts"));
    }

    void everyFileAndTheJoinAreWorthTwentyTicks()
    {
        QCOMPARE(MergeTicks(0), 20);
        QCOMPARE(MergeTicks(2), 60);
        QCOMPARE(MergeTicks(20), 420);
    }

    void thePercentageIsNeverRoundedUp()
    {
        QCOMPARE(MergePercent(0, 60), 0);
        QCOMPARE(MergePercent(1, 60), 1);
        QCOMPARE(MergePercent(59, 60), 98);
        QCOMPARE(MergePercent(60, 60), 100);
        QCOMPARE(MergePercent(419, 420), 99);
    }

    void withoutTicksToCountThePercentageIsZero()
    {
        QCOMPARE(MergePercent(0, 0), 0);
        QCOMPARE(MergePercent(1, 0), 0);
        QCOMPARE(MergePercent(1, -20), 0);
    }
};

QTEST_GUILESS_MAIN(MergeCommandTest)
#include "merge_command_test.moc"
