#include "tests/window/job_tool.h"
#include "tests/window/pictures.h"

#include <QHeaderView>

namespace {
constexpr auto kSource = "m_pSourceVideoTable";
constexpr auto kTarget = "m_pTargetVideoTable";
constexpr auto kField = "m_pLayout4DirEdit";
} // namespace

class MergePageTest : public VideoPageTest
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

    void addingTwiceGivesTwoIdenticalEntriesAndEnablesMerge()
    {
        MakeVideo("a.mp4", "00:00:07");
        EnterMergePage();
        QCOMPARE(Child<QTableWidget>(kTarget)->columnWidth(0), 80);
        ClickRow(kSource, 0);
        Press("Add");
        QCOMPARE(Child<QTableWidget>(kTarget)->columnWidth(0), 180);
        QVERIFY(!Enabled("Merge"));
        Press("Add");
        QVERIFY(Enabled("Merge"));
        QCOMPARE(Row(kTarget, 0), QString("a.mp4, 9 Bytes, 00:00:07"));
        QCOMPARE(Row(kTarget, 1), Row(kTarget, 0));
        QCOMPARE(WrongPicture(kTarget, 1), QString());
        QCOMPARE(Child<QTableWidget>(kSource)->selectedItems().size(), 3); // stays
    }

    void aDoubleClickAdds()
    {
        MakeVideo("a.mp4");
        MakeVideo("b.mp4");
        EnterMergePage();
        DoubleClickRow(kSource, 1);
        QCOMPARE(Names(kTarget), QStringList{"b.mp4"});
    }

    void theTwentyFirstEntryIsRefused_data()
    {
        QTest::addColumn<bool>("doubleClick");
        QTest::newRow("Add") << false;
        QTest::newRow("double click") << true;
    }

    void theTwentyFirstEntryIsRefused()
    {
        QFETCH(bool, doubleClick);
        MakeVideo("a.mp4");
        EnterMergePage();
        ClickRow(kSource, 0);
        for (int i = 0; i < 20; ++i) {
            Call("btnAddSlot");
        }
        QCOMPARE(Boxes().texts, QStringList());
        if (doubleClick) {
            DoubleClickRow(kSource, 0);
        } else {
            Press("Add");
        }
        QCOMPARE(Boxes().texts,
                 QStringList{"You can merge multiple files no more than 20 files at one time"});
        QCOMPARE(Boxes().places,
                 QList<QRect>{QRect(Window().x() + 125, Window().y() + 75, 400, 150)});
        QCOMPARE(Names(kTarget).size(), 20);
        QVERIFY(Enabled("Merge"));
    }

    void selectingInTheListEnablesItsButtons()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        QCOMPARE(ListButtons(), QString());
        ClickRow(kTarget, 0);
        QCOMPARE(ListButtons(), QString("Down Delete"));
        ClickRow(kTarget, 1);
        QCOMPARE(ListButtons(), QString("Up Down Delete"));
        ClickRow(kTarget, 2);
        QCOMPARE(ListButtons(), QString("Up Delete"));
    }

    void upToTheTopDisablesUpAndLeavesDown()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        ClickRow(kTarget, 1);
        Press("Up");
        QCOMPARE(Names(kTarget), QStringList({"b.mp4", "a.mp4", "c.mp4"}));
        QCOMPARE(ListButtons(), QString("Down Delete"));
        QCOMPARE(SelectedRow(), 0);
    }

    void upFromTheBottomToTheTopOfTwoDoesNotEnableDown()
    {
        MakeList({"a.mp4", "b.mp4"});
        ClickRow(kTarget, 1);
        QCOMPARE(ListButtons(), QString("Up Delete"));
        Press("Up");
        QCOMPARE(ListButtons(), QString("Delete"));
    }

    void upFromTheBottomEnablesDownBelowTheTop()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        ClickRow(kTarget, 2);
        Press("Up");
        QCOMPARE(Names(kTarget), QStringList({"a.mp4", "c.mp4", "b.mp4"}));
        QCOMPARE(ListButtons(), QString("Up Down Delete"));
        Press("Up");
        QCOMPARE(Names(kTarget), QStringList({"c.mp4", "a.mp4", "b.mp4"}));
        QCOMPARE(ListButtons(), QString("Down Delete"));
    }

    void downToTheBottomDisablesDownAndDoesNotEnableUp()
    {
        MakeList({"a.mp4", "b.mp4"});
        ClickRow(kTarget, 0);
        QCOMPARE(ListButtons(), QString("Down Delete"));
        Press("Down");
        QCOMPARE(Names(kTarget), QStringList({"b.mp4", "a.mp4"}));
        QCOMPARE(ListButtons(), QString("Delete"));
        QCOMPARE(SelectedRow(), 1);
    }

    void downFromTheTopEnablesUpAboveTheBottom()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        ClickRow(kTarget, 0);
        Press("Down");
        QCOMPARE(Names(kTarget), QStringList({"b.mp4", "a.mp4", "c.mp4"}));
        QCOMPARE(ListButtons(), QString("Up Down Delete"));
    }

    void aMoveTakesAllThreeTextsAlongButNotThePicture()
    {
        MakeVideo("a.mp4", "00:00:01");
        MakeVideo("b.mp4", "00:00:02 ");
        EnterMergePage();
        Add(0);
        Add(1);
        Child<QTableWidget>(kTarget)->item(1, 0)->setIcon(QIcon(":/image/avi.png"));
        ClickRow(kTarget, 1);
        Press("Up");
        QCOMPARE(Row(kTarget, 0), QString("b.mp4, 10 Bytes, 00:00:02"));
        QCOMPARE(Row(kTarget, 1), QString("a.mp4, 9 Bytes, 00:00:01"));
        QCOMPARE(Child<QTableWidget>(kTarget)->selectedItems().size(), 3);
        QCOMPARE(WrongPicture(kTarget, 0), QString()); // the icons stay
        QCOMPARE(WrongPicture(kTarget, 1), QString("row 1: shows avi.png, should show mp4.png"));
        Call("btnDownSlot");
        QCOMPARE(Row(kTarget, 0), QString("a.mp4, 9 Bytes, 00:00:01"));
        QCOMPARE(WrongPicture(kTarget, 0), QString());
    }

    void upOnTheFirstAndDownOnTheLastDoNothing()
    {
        MakeList({"a.mp4", "b.mp4"});
        ClickRow(kTarget, 0);
        Call("btnUpSlot");
        QCOMPARE(Names(kTarget), QStringList({"a.mp4", "b.mp4"}));
        ClickRow(kTarget, 1);
        Call("btnDownSlot");
        QCOMPARE(Names(kTarget), QStringList({"a.mp4", "b.mp4"}));
    }

    void deleteTakesOneRowAPressAndKeepsTheOtherButtons()
    {
        MakeList({"a.mp4", "b.mp4", "c.mp4"});
        ClickRow(kTarget, 1);
        Press("Delete");
        QCOMPARE(Names(kTarget), QStringList({"a.mp4", "c.mp4"}));
        QCOMPARE(ListButtons(), QString("Up Down Delete"));
        QVERIFY(Enabled("Merge"));
        ClickRow(kTarget, 0);
        Press("Delete");
        QVERIFY(!Enabled("Merge"));
        Add(0);
        QVERIFY(Enabled("Merge"));
    }

    void deleteWithoutASelectionDoesNothing()
    {
        MakeList({"a.mp4", "b.mp4"});
        Child<QTableWidget>(kTarget)->clearSelection();
        Call("btnDelSlot");
        QCOMPARE(Names(kTarget).size(), 2);
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

private:
    QString Row(const char* table, int row)
    {
        QStringList texts;
        for (int column = 0; column < 3; ++column) {
            texts << Child<QTableWidget>(table)->item(row, column)->text();
        }
        return texts.join(", ");
    }

    QString WrongPicture(const char* table, int row)
    {
        return PictureDifference(QString("row %1").arg(row),
                                 Child<QTableWidget>(table)->item(row, 0)->icon(), {16, 16},
                                 "mp4.png");
    }

    int SelectedRow()
    {
        const auto items = Child<QTableWidget>(kTarget)->selectedItems();
        return items.size() == 3 ? items.first()->row() : -1;
    }

    QString ListButtons()
    {
        QStringList enabled;
        for (const char* text : {"Up", "Down", "Delete"}) {
            if (Enabled(text)) {
                enabled << text;
            }
        }
        return enabled.join(' ');
    }
};

QTEST_MAIN(MergePageTest)
#include "merge_page_test.moc"
