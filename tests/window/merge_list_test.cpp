#include "tests/window/merge_tables.h"

// The list of the videos to merge: what is added, moved and deleted.
class MergeListTest : public MergeTablesTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { PrepareVideos(); }
    void cleanup() { FinishVideos(); }

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

private:
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

QTEST_MAIN(MergeListTest)
#include "merge_list_test.moc"
