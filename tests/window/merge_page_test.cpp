#include "tests/window/merge_tables.h"

#include <QHeaderView>

namespace {

constexpr auto kField = "m_pLayout4DirEdit";

} // namespace

// The merge page up to the list: folder, table of videos, Add.
class MergePageTest : public MergeTablesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

    void theMergeEntryListsEveryVideoWithSizeAndDuration()
    {
        MakeVideo("new.mp4", "00:01:02");
        MakeVideo("old.mp4", "01:00:00");
        EnterMergePage();
        QCOMPARE(Row(kSource, 0), QString("new.mp4, 9 Bytes, 00:01:02"));
        QCOMPARE(Row(kSource, 1), QString("old.mp4, 9 Bytes, 01:00:00"));
        QCOMPARE(WrongPicture(kSource, 1), QString());
        QVERIFY(Child<QTableWidget>(kSource)->item(0, 1)->icon().isNull());
        QCOMPARE(Page(), 3);
    }

    void theRowsKeepTheDefaultTextColour()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        QVERIFY(!Child<QTableWidget>(kSource)->item(0, 0)->data(Qt::ForegroundRole).isValid());
    }

    void enteringAgainReadsTheFolderAgainAndKeepsTheList()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        Add(0);
        Press("Back");
        MakeVideo("b.mp4");
        Call("btnEditSlot");
        QCOMPARE(Names(kSource), QStringList({"a.mp4", "b.mp4"}));
        QCOMPARE(Names(kTarget), QStringList{"a.mp4"});
    }

    void theFolderButtonPutsEveryFileIntoTheFirstRow()
    {
        MakeVideo("new.mp4", "00:00:01", Target());
        MakeVideo("middle.mp4", "00:00:02", Target());
        MakeVideo("old.mp4", "00:00:03", Target());
        MakeVideo("a.mp4");
        EnterMergePage();
        ClickRow(kSource, 0);
        QVERIFY(Enabled("Add"));
        Calls();
        Call("btnSlotLayout4Dir");
        QCOMPARE(Child<QLineEdit>(kField)->text(), Target());
        QCOMPARE(Names(kSource), QStringList({"old.mp4", "-", "-"}));
        QCOMPARE(Row(kSource, 0), QString("old.mp4, 9 Bytes, 00:00:03"));
        QCOMPARE(Calls().size(), 3); // all are probed anyway
        QVERIFY(!Enabled("Add"));
    }

    void theColumnsAreAsWideAsWhatTheyHold_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("short") << "a.mp4";
        QTest::newRow("long") << QString(60, 'n') + ".mp4";
    }

    void theColumnsAreAsWideAsWhatTheyHold()
    {
        QFETCH(QString, name);
        MakeVideo(name);
        EnterMergePage();
        const auto* table = Child<QTableWidget>(kSource);
        const int text = table->fontMetrics().horizontalAdvance(name);
        const int header = table->horizontalHeader()->sectionSizeHint(0);
        constexpr int icon = 40; // and the gaps at its sides
        QVERIFY2(table->columnWidth(0) > text, "the name is cut off");
        QVERIFY2(table->columnWidth(0) <= qMax(text + icon, header), "wider than the name");
    }

    void enteringThePagePutsTheCursorNotIntoTheField()
    {
        MakeVideo("a.mp4");
        OpenWindow();
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Press("Merge your several capturing screen videos into one file");
        QCOMPARE(QApplication::focusWidget(), Child<QTableWidget>(kSource));
    }

    void aCancelledChooserChangesNothing()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        ClickRow(kSource, 0);
        Boxes().directory = QString();
        Call("btnSlotLayout4Dir");
        QCOMPARE(Boxes().choosers, 1);
        QCOMPARE(Child<QLineEdit>(kField)->text(), SaveDirectory());
        QCOMPARE(Names(kSource), QStringList{"a.mp4"});
        QVERIFY(Enabled("Add"));
    }

    void aNewFolderLeavesTheMergeList()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        Add(0);
        Call("btnSlotLayout4Dir");
        QCOMPARE(Names(kTarget), QStringList{"a.mp4"});
    }

    void leavingTheFieldListsRowByRow()
    {
        MakeVideo("new.mp4", "00:00:01", Target());
        MakeVideo("old.mp4", "00:00:02", Target());
        EnterMergePage();
        Child<QLineEdit>(kField)->setText(Target());
        Leave(kField);
        QCOMPARE(Names(kSource), QStringList({"new.mp4", "old.mp4"}));
        Child<QLineEdit>(kField)->clear();
        Leave(kField);
        QCOMPARE(Names(kSource), QStringList({"new.mp4", "old.mp4"}));
        QCOMPARE(Page(), 3);
    }

    void leavingTheFieldWithAFolderWithoutVideosEmptiesTheTable()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        Add(0);
        Child<QLineEdit>(kField)->setText(Target());
        Leave(kField);
        QCOMPARE(Child<QTableWidget>(kSource)->rowCount(), 0);
        QCOMPARE(Names(kTarget), QStringList{"a.mp4"});
        QVERIFY(!Enabled("Add"));
    }

    void addFollowsTheSelection()
    {
        MakeVideo("a.mp4");
        EnterMergePage();
        QVERIFY(!Enabled("Add"));
        ClickRow(kSource, 0);
        QVERIFY(Enabled("Add"));
        Child<QTableWidget>(kSource)->clearSelection();
        QMetaObject::invokeMethod(&Window(), "SourceTableItemClick",
                                  Q_ARG(QTableWidgetItem*, nullptr));
        QVERIFY(!Enabled("Add"));
    }

    void twoHundredVideosAreListed()
    {
        for (int i = 0; i < 200; ++i) {
            MakeVideo(QString("%1.mp4").arg(i, 3, 10, QChar('0')));
        }
        QFile::remove(BesideProgram("tool")); // the list does not need durations
        EnterMergePage();
        QCOMPARE(Names(kSource).size(), 200);
        QCOMPARE(Row(kSource, 199), QString("199.mp4, 9 Bytes, "));
    }
};

QTEST_MAIN(MergePageTest)
#include "merge_page_test.moc"
