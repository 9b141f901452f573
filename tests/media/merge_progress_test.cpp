// What the dialog of a real merge shows: progress that follows the work, and one outcome, at the
// end.
#include "tests/media/real_edit.h"

class MergeProgressTest : public RealEditTest
{
    Q_OBJECT

private slots:
    void init()
    {
        PrepareEdits(TOOL_PROGRAM);
        m_percents.clear();
        m_before.clear();
    }
    void cleanup() { FinishEdits(); }
    void barIsFullOnlyAtTheEnd_data();
    void barIsFullOnlyAtTheEnd();
    void damagedPacketKeepsTheResult();
    void cancelLeavesNothing();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    void Merge();
    Q_SLOT void Hear(int percent);

    QList<int> m_percents; // as reported
    QStringList m_before;  // messages that were shown before the last report
};

void MergeProgressTest::Merge()
{
    connect(&Window(), SIGNAL(AddProcessCallBack(int, QString, QString, int)), this,
            SLOT(Hear(int)));
    Call("btnSlotLayout4Merge"); // the button is for two files or more
}

void MergeProgressTest::Hear(int percent)
{
    m_percents << percent;
    m_before = Boxes().texts;
}

void MergeProgressTest::barIsFullOnlyAtTheEnd_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<bool>("slow");
    QTest::addColumn<int>("steps");   // reports of the join at least
    QTest::addColumn<int>("reached"); // percent before the last report, at least
    QTest::newRow("one file, short") << 1 << false << 1 << 5;
    QTest::newRow("one file, long") << 1 << true << 20 << 50;
    QTest::newRow("two files, short") << 2 << false << 1 << 5;
    QTest::newRow("two files, long") << 2 << true << 20 << 50;
    QTest::newRow("twenty files, short") << 20 << false << 1 << 5;
    // Of 420 steps, in 4 s.
    QTest::newRow("twenty files, long") << 20 << true << 20 << 8;
}

void MergeProgressTest::barIsFullOnlyAtTheEnd()
{
    QFETCH(int, files);
    QFETCH(bool, slow);
    QFETCH(int, steps);
    QFETCH(int, reached);
    // The page lists the newest first.
    for (int i = 1; i < files; ++i) {
        MakeMovieHere(QString("%1.mp4").arg(i), 0.4, i == 1 ? "80x60" : "160x120");
    }
    MakeMovieHere("0.mp4", slow ? 4 : 1);
    const double seconds = (slow ? 4 : 1) + (files - 1) * 0.4;
    if (slow) {
        SlowDown();
    }
    ListMovies(files);
    Merge();
    QVERIFY2(std::is_sorted(m_percents.begin(), m_percents.end()), "the bar goes back");
    QCOMPARE(m_percents.count(100), 1);
    QCOMPARE(m_percents.last(), 100);
    QVERIFY2(m_percents.size() - 1 >= files + steps,
             qPrintable(QString("%1 reports").arg(m_percents.size())));
    const int last = m_percents[m_percents.size() - 2];
    QVERIFY2(last >= reached, qPrintable(QString("the bar reaches %1 of 100").arg(last)));
    QCOMPARE(m_before, QStringList());
    QCOMPARE(Results().size(), 1);
    QCOMPARE(Boxes().texts, QStringList{"Merge success, file path is " + Target() + '/' +
                                        Results().value(0) + ' '});
    QVERIFY2(std::abs(Seconds(Results().value(0)) - seconds) < 0.1 * files + 0.2,
             qPrintable(QString::number(Seconds(Results().value(0)))));
}

// ffmpeg says "Invalid data" and goes on.
void MergeProgressTest::damagedPacketKeepsTheResult()
{
    MakeMovieHere("a.mp4", 4);
    const QByteArray size = MakeMovie(PictureInput(2, "80x60") + PlainCodecs() +
                                      QStringList{SaveDirectory() + "/b.mp4"});
    QVERIFY2(size.isEmpty(), size);
    QByteArray movie = Content(SaveDirectory() + "/a.mp4");
    const auto middle = movie.indexOf("mdat") + (movie.size() - movie.indexOf("mdat")) / 2;
    movie.replace(middle, 3000, QByteArray(3000, '\xff'));
    QVERIFY(Write(SaveDirectory() + "/a.mp4", movie));
    ListMovies(2);
    Merge();
    QCOMPARE(Results().size(), 1);
    QVERIFY2(std::abs(Seconds(Results().value(0)) - 6) < 0.5,
             qPrintable(QString::number(Seconds(Results().value(0)))));
}

void MergeProgressTest::cancelLeavesNothing()
{
    MakeMovieHere("a.mp4", 20);
    SlowDown();
    ListMovies(1);
    connect(Child<QProcess>("m_pMergeProcess"), &QProcess::readyRead, this,
            [] { DRUI::m_bisFinished = true; });
    QElapsedTimer time;
    time.start();
    Merge();
    QVERIFY2(time.elapsed() < 10000, qPrintable(QString("%1 ms").arg(time.elapsed())));
    QCOMPARE(Results(), QStringList());
}

QTEST_MAIN(MergeProgressTest)
#include "merge_progress_test.moc"
