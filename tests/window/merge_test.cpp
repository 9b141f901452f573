#include "tests/window/job_tool.h"

// What a merge runs, and what it leaves.
class MergeTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void everyFileIsConvertedAndAllAreJoinedWithATrailingSeparator()
    {
        MakeList({"a b.mp4", "c.mp4"});
        Press("Merge");
        const QString from = SaveDirectory();
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 3);
        QCOMPARE(calls.at(0), Conversion(from + "/a b.mp4", 1));
        QCOMPARE(calls.at(1), Conversion(from + "/c.mp4", 2));
        QCOMPARE(calls.at(2), "<-i><concat:" + Target() + "/1.ts|" + Target() +
                                  "/2.ts|><-acodec><copy><-vcodec><copy><-absf><aac_adtstoasc><" +
                                  FirstResult() + '>');
    }

    void onlyTheMergedFileIsLeftNamedByTheTime()
    {
        MakeList({"a.mp4", "b.mp4"});
        const QDateTime before = QDateTime::currentDateTime();
        Press("Merge");
        QCOMPARE(Results().size(), 1);
        const auto named =
            QDateTime::fromString(Results().first(), "'Merge_'yyyy-MM-dd hh-mm-ss'.mp4'");
        QVERIFY2(named.isValid(), qPrintable(Results().first()));
        QVERIFY(before.secsTo(named) >= -1 && before.secsTo(named) <= 5);
        QCOMPARE(Boxes().texts, QStringList{Success()});
    }

    void twentyFilesAreJoinedInTheirOrder()
    {
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
        EnterMergePage();
        for (int i = 0; i < 20; ++i) {
            Add(i % 2);
        }
        Calls();
        Press("Merge");
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 21);
        QCOMPARE(calls.at(18), Conversion(SaveDirectory() + "/a.mp4", 19));
        QCOMPARE(calls.at(19), Conversion(SaveDirectory() + "/b.mp4", 20));
        QCOMPARE(calls.at(20).count(".ts|"), 20);
        QCOMPARE(Results().size(), 1);
    }

    void theCommandLinesEndAsTheyShould()
    {
        MakeList({"a.mp4", "b.mp4"});
        const QString tool = '"' + BesideProgram("tool") + '"';
        QTest::ignoreMessage(QtDebugMsg,
                             qPrintable(QDebug::toString(
                                 tool + " -i \"" + SaveDirectory() +
                                 "/a.mp4\" -vcodec copy -acodec copy -vbsf h264_mp4toannexb \"" +
                                 Target() + "/1.ts\" ")));
        QTest::ignoreMessage(QtDebugMsg, qPrintable(QDebug::toString(Target() + "/2.ts")));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("-absf aac_adtstoasc .*mp4.\"\"$"));
        Press("Merge");
    }

    void theFilesAreLookedForInTheFolderShownNow()
    {
        MakeVideo("other.mp4", "00:00:01", Target());
        MakeList({"a.mp4", "b.mp4"});
        Child<QLineEdit>("m_pLayout4DirEdit")->setText(Target());
        Press("Merge");
        QCOMPARE(Calls().first(), Conversion(Target() + "/a.mp4", 1));
    }

    void anExistingIntermediateIsDeletedFirst()
    {
        WriteFile(Target() + "/1.ts", "stale");
        MakeList({"a.mp4", "b.mp4"});
        SetJob("if [[ -e ${!#} ]]; then printf stale >\"$here/stale\"; fi\n"
               "printf made >\"${!#}\"\n");
        Press("Merge");
        QVERIFY2(!QFile::exists(BesideProgram("stale")), "the tool found the old intermediate");
        QCOMPARE(Results().size(), 1);
    }

    // A directory cannot be removed like a file: the conversion writes beside it, the join does
    // not.
    void anIntermediateThatCannotBeDeletedIsNumberedInTheFirstStageOnly()
    {
        QVERIFY(QDir(Target()).mkdir("1.ts"));
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        const QStringList calls = Calls();
        QVERIFY2(calls.at(0).endsWith('<' + Target() + "/1 (1).ts>"), qPrintable(calls.at(0)));
        QVERIFY2(calls.at(2).contains("concat:" + Target() + "/1.ts|"), qPrintable(calls.at(2)));
    }

    void aTakenNameIsNumberedAndShownAsTheDestination()
    {
        const QDateTime now = QDateTime::currentDateTime();
        for (int i = 0; i < 30; ++i) { // every second the test may take
            WriteFile(Target() + now.addSecs(i).toString("'/Merge_'yyyy-MM-dd hh-mm-ss'.mp4'"),
                      "mine");
        }
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        QCOMPARE(Results().size(), 31);
        QCOMPARE(Boxes().texts.size(), 1);
        QVERIFY2(Boxes().texts.first().endsWith(" (1).mp4 "), qPrintable(Boxes().texts.first()));
        QCOMPARE(Results().filter(" (1)").size(), 1);
    }

    void aCancelledChooserForgetsFilesAndFolder()
    {
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        Calls();
        Boxes().directory = QString();
        Press("Merge");
        QCOMPARE(Boxes().startDirectory, Target());
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(Boxes().texts.size(), 1);
        const QFileDialog elsewhere(nullptr, QString(), SaveDirectory());
        Press("Merge"); // it starts at the default place
        QCOMPARE(Boxes().startDirectory, SaveDirectory());
    }

    void theSourcesAreNeverChanged()
    {
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        QCOMPARE(ReadFile(SaveDirectory() + "/a.mp4"), QByteArray("00:00:30\n"));
        QCOMPARE(ReadFile(SaveDirectory() + "/b.mp4"), QByteArray("00:00:30\n"));
    }

    void theListStaysForAnotherMerge()
    {
        MakeList({"a.mp4", "b.mp4"});
        Press("Merge");
        Press("Merge");
        QCOMPARE(Names("m_pTargetVideoTable"), QStringList({"a.mp4", "b.mp4"}));
        QCOMPARE(Results().size(), 2); // in the same second, too
    }

private:
    QString Conversion(const QString& input, int number)
    {
        return "<-i><" + input + "><-vcodec><copy><-acodec><copy><-vbsf><h264_mp4toannexb><" +
               Target() + '/' + QString::number(number) + ".ts>";
    }

    QString Success() { return "Merge success, file path is " + FirstResult() + ' '; }
};

QTEST_MAIN(MergeTest)
#include "merge_test.moc"
