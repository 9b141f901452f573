#include "tests/window/job_tool.h"

// The five choosers of a directory: what they offer, where they begin, and over which window.
class ChoosersTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("a.mp4");
    }
    void cleanup() { FinishVideos(); }

    // Not in the folder that the page shows: where the user was last.
    void theFirstChooserBeginsWhereTheUserWasLast_data() { Slots(); }
    void theFirstChooserBeginsWhereTheUserWasLast()
    {
        QFETCH(QByteArray, slot);
        const QTemporaryDir last;
        const QFileDialog elsewhere(nullptr, QString(), last.path());
        OpenWindow();
        Call(slot.constData());
        QCOMPARE(Boxes().choosers, 1);
        QCOMPARE(Boxes().chooserKind, UsualChooser().replace(QDir::currentPath(), last.path()));
    }

    void aSecondChooserOfAJobBeginsWhereItsFirstWentAndOthersDoNot_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<bool>("remembers");
        QTest::newRow("record page") << QByteArray("btnSlotLayout2Dir") << false;
        QTest::newRow("cut page") << QByteArray("btnSlotLayout3Dir") << false;
        QTest::newRow("merge page") << QByteArray("btnSlotLayout4Dir") << false;
        QTest::newRow("cut") << QByteArray("btnSlotLayout3Cut") << true;
        QTest::newRow("merge") << QByteArray("btnSlotLayout4Merge") << true;
    }

    void aSecondChooserOfAJobBeginsWhereItsFirstWentAndOthersDoNot()
    {
        QFETCH(QByteArray, slot);
        QFETCH(bool, remembers);
        const QTemporaryDir last;
        OpenWindow();
        Call(slot.constData());
        const QFileDialog elsewhere(nullptr, QString(), last.path());
        Call(slot.constData());
        QCOMPARE(Boxes().startDirectory, remembers ? Target() : last.path());
    }

    // Each of the two jobs has its own.
    void aMergesChooserDoesNotBeginWhereACutWent()
    {
        const QTemporaryDir last;
        OpenWindow();
        Call("btnSlotLayout3Cut");
        const QFileDialog elsewhere(nullptr, QString(), last.path());
        Call("btnSlotLayout4Merge");
        QCOMPARE(Boxes().startDirectory, last.path());
    }

    void aDirectoryChosenOnOnePageLeavesTheOtherFieldsAlone_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QByteArray>("changed");
        QTest::newRow("record page")
            << QByteArray("btnSlotLayout2Dir") << QByteArray("m_pSaveDirEdit");
        QTest::newRow("cut page") << QByteArray("btnSlotLayout3Dir")
                                  << QByteArray("m_pLayout3DirEdit");
        QTest::newRow("merge page")
            << QByteArray("btnSlotLayout4Dir") << QByteArray("m_pLayout4DirEdit");
        QTest::newRow("cut") << QByteArray("btnSlotLayout3Cut") << QByteArray();
        QTest::newRow("merge") << QByteArray("btnSlotLayout4Merge") << QByteArray();
    }

    void aDirectoryChosenOnOnePageLeavesTheOtherFieldsAlone()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QByteArray, changed);
        OpenWindow();
        const QByteArray settings = ReadFile(BesideProgram("ScreenRecord.ini"));
        Call(slot.constData());
        for (const QByteArray field :
             {"m_pSaveDirEdit", "m_pLayout3DirEdit", "m_pLayout4DirEdit"}) {
            QVERIFY2(Child<QLineEdit>(field.constData())->text() ==
                         (field == changed ? Target() : SaveDirectory()),
                     field.constData());
        }
        QCOMPARE(ReadFile(BesideProgram("ScreenRecord.ini")) == settings,
                 changed != "m_pSaveDirEdit"); // only that one is kept
    }

private:
    static void Slots()
    {
        QTest::addColumn<QByteArray>("slot");
        for (const char* slot : {"btnSlotLayout2Dir", "btnSlotLayout3Dir", "btnSlotLayout4Dir",
                                 "btnSlotLayout3Cut", "btnSlotLayout4Merge"}) {
            QTest::newRow(slot) << QByteArray(slot);
        }
    }
};

QTEST_MAIN(ChoosersTest)
#include "choosers_test.moc"
