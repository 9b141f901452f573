#include "jobs/job_report.h"

#include <QTest>

class JobReportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aChunkTellsWhatItHoldsLetterForLetter_data()
    {
        QTest::addColumn<QString>("chunk");
        QTest::addColumn<QString>("marks");
        QTest::newRow("progress") << "frame=  1\rframe=  2\r"
                                  << "tick ";
        QTest::newRow("invalid") << "x.mp4: Invalid data found when processing input"
                                 << "invalid ";
        QTest::newRow("missing") << "x.mp4: No such file or directory"
                                 << "missing ";
        QTest::newRow("all") << "No such file\nframe=Invalid data"
                             << "tick invalid missing ";
        QTest::newRow("half") << "rame=, nvalid data, o such file, fram"
                              << "";
        QTest::newRow("other case") << "Frame= FRAME= invalid data NO SUCH FILE no such file"
                                    << "";
        QTest::newRow("over a line's end") << "frame\n=Invalid\ndata No such\nfile"
                                           << "";
        QTest::newRow("nothing") << ""
                                 << "";
    }

    void aChunkTellsWhatItHoldsLetterForLetter()
    {
        QFETCH(QString, chunk);
        const OutputMarks marks = MarksIn(chunk);
        QTEST(QString(marks.tick ? "tick " : "") + (marks.invalid ? "invalid " : "") +
                  (marks.missing ? "missing " : ""),
              "marks");
    }

    void everyLineOfTheProgressBeginsWithTwoBlanks()
    {
        QCOMPARE(ProgressText(kCutOperation, 5, "/v/a.mp4", "/o/Cut_a.mp4"),
                 QString("  Process: 5%\n  Current Cut: /v/a.mp4\n  Destination: /o/Cut_a.mp4"));
        QCOMPARE(ProgressText(kMergeOperation, 100, "/v/a.mp4", "/o/M.mp4"),
                 QString("  Process: 100%\n  Current Merger: /v/a.mp4\n  Destination: /o/M.mp4"));
    }

    void whatLatin1CannotExpressIsAQuestionMark()
    {
        const QString text = ProgressText(kCutOperation, 0, QString::fromUtf8("/\u00e9/\u4e2d.mp4"),
                                          QString::fromUtf8("/\u0416"));
        QCOMPARE(text, QString::fromUtf8("  Process: 0%\n  Current Cut: /\u00e9/?.mp4\n"
                                         "  Destination: /?"));
    }

    void aPathOfAnyLengthIsShownWhole()
    {
        const QString path = '/' + QString(5000, 'x');
        QVERIFY(ProgressText(kMergeOperation, 1, path, path).endsWith("Destination: " + path));
    }

    void theSuccessEndsInABlank()
    {
        QCOMPARE(SuccessText(kCutOperation, "/o/Cut_a.mp4"),
                 QString("Cut success, file path is /o/Cut_a.mp4 "));
        QCOMPARE(SuccessText(kMergeOperation, "/o/M.mp4"),
                 QString("Merge success, file path is /o/M.mp4 "));
    }

    void aPerCentSignInThePathIsNoPlaceholder()
    {
        QCOMPARE(SuccessText(kCutOperation, "/o/%1 %2.mp4"),
                 QString("Cut success, file path is /o/%1 %2.mp4 "));
    }

    void theMessagesKeepTheirLettersTheDoubledTheIncluded()
    {
        QCOMPARE(FailureText(kMergeOperation),
                 QString("Merge failed, not an valid format, it's better to merge created mp4 "
                         "files"));
        QCOMPARE(FailureText(kCutOperation),
                 QString("Clip failed, not an valid format, it's better to clip created mp4 "
                         "files"));
        QCOMPARE(CancelQuestion(kMergeOperation),
                 QString("Are you sure to cancel the the video merge?"));
        QCOMPARE(CancelQuestion(kCutOperation), QString("Are you sure to cancel the video cut?"));
    }

    void whatIsNoMergeSpeaksOfACut()
    {
        QCOMPARE(FailureText(0), FailureText(kCutOperation));
        QCOMPARE(CancelQuestion(0), CancelQuestion(kCutOperation));
        QCOMPARE(SuccessText(0, "/x"), SuccessText(kCutOperation, "/x"));
    }

    void aCutCountsInStepsOfFivePerCent()
    {
        QCOMPARE(CutPercent(0), 0);
        QCOMPARE(CutPercent(1), 5);
        QCOMPARE(CutPercent(20), 100);
    }
};

QTEST_GUILESS_MAIN(JobReportTest)
#include "job_report_test.moc"
