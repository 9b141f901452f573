// Jobs of the real window that take longer than it waits: told as success, and completed behind it.
// Window and `tool` are linked with shorter waits.
#include "tests/media/real_edit.h"

class EditBackgroundTest : public RealEditTest
{
    Q_OBJECT

private slots:
    void init()
    {
        PrepareEdits(HASTY_TOOL);
        SlowDown();
    }
    void cleanup() { FinishEdits(); }
    void trimIsCompletedAfterTheProgramIsClosed();
    void mergeIsCompletedAfterTheProgramIsClosed_data();
    void mergeIsCompletedAfterTheProgramIsClosed();
    void secondMergeRunsBesideTheFirst();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // Whether exactly these many whole movies of this length appear, and nothing else remains.
    void ExpectMovies(int count, double seconds);
};

void EditBackgroundTest::ExpectMovies(int count, double seconds)
{
    const auto areWhole = [&] {
        const QStringList names = Results();
        return names.size() == count && names.filter(".part").isEmpty();
    };
    QVERIFY2(WaitFor(areWhole), qPrintable(Results().join(", ")));
    for (const QString& name : Results()) {
        QVERIFY2(std::abs(Seconds(name) - seconds) < 0.3,
                 qPrintable(QString("%1: %2 s").arg(name).arg(Seconds(name))));
        QCOMPARE(DecodingErrors(Target() + '/' + name), QByteArray());
    }
}

void EditBackgroundTest::trimIsCompletedAfterTheProgramIsClosed()
{
    MakeMovieHere("a.mp4", 6);
    EnterCutPage();
    ClickRow("m_pCutVideoTable", 0);
    SetMarks(0, 5);
    Press("Cut");
    QCOMPARE(Boxes().texts, QStringList{"Cut success, file path is " + Target() + "/Cut_a.mp4 "});
    QCOMPARE(Results(), QStringList{"Cut_a.mp4.part"});
    CloseWindow(); // kills what still runs
    ExpectMovies(1, 5);
}

void EditBackgroundTest::mergeIsCompletedAfterTheProgramIsClosed_data()
{
    QTest::addColumn<QString>("size"); // of the second movie
    QTest::newRow("copied") << "160x120";
    QTest::newRow("encoded") << "80x60";
}

void EditBackgroundTest::mergeIsCompletedAfterTheProgramIsClosed()
{
    QFETCH(QString, size);
    MakeMovieHere("a.mp4", 2, size);
    MakeMovieHere("b.mp4", 5);
    ListMovies(2);
    Press("Merge");
    QCOMPARE(Boxes().texts.size(), 1);
    QCOMPARE(Results().filter(".part").size(), 1);
    QCOMPARE(Results().size(), 1);
    CloseWindow();
    ExpectMovies(1, 7);
}

// The names differ by the second.
void EditBackgroundTest::secondMergeRunsBesideTheFirst()
{
    MakeMovieHere("a.mp4", 5);
    MakeMovieHere("b.mp4", 5);
    ListMovies(2);
    Press("Merge");
    QCOMPARE(Results().filter(".part").size(), 1);
    Press("Merge");
    QCOMPARE(Boxes().texts.size(), 2);
    ExpectMovies(2, 10);
}

QTEST_MAIN(EditBackgroundTest)
#include "edit_background_test.moc"
