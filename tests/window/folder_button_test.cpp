#include "tests/window/job_tool.h"

namespace {
constexpr auto kCutTable = "m_pCutVideoTable";
constexpr auto kSource = "m_pSourceVideoTable";
} // namespace

// The tables that a folder button leaves: one named row, the rest empty, the columns as they were.
class FolderButtonTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("new.mp4", "00:00:01", Target());
        MakeVideo("old.mp4", "00:00:02", Target());
    }
    void cleanup() { FinishVideos(); }

    void theColumnsKeepTheirWidths()
    {
        MakeVideo(QString(60, 'n') + ".mp4", "00:00:01", Target());
        EnterMergePage();
        auto* table = Child<QTableWidget>(kSource);
        table->setColumnWidth(0, 123);
        table->setColumnWidth(1, 45);
        Call("btnSlotLayout4Dir");
        QCOMPARE(table->columnWidth(0), 123);
        QCOMPARE(table->columnWidth(1), 45);
    }

    void aClickOnAnEmptyRowAddsNothingToTheMergeList()
    {
        EnterMergePage();
        Call("btnSlotLayout4Dir");
        ClickEmptyRow(kSource);
        QVERIFY(!Enabled("Add"));
        Call("btnAddSlot");
        QCOMPARE(Names("m_pTargetVideoTable"), QStringList());
        ClickRow(kSource, 0);
        Press("Add");
        QCOMPARE(Names("m_pTargetVideoTable"), QStringList{"old.mp4"});
    }

    void aClickOnAnEmptyRowKeepsTheVideoToBeCut()
    {
        EnterCutPage();
        Call("btnSlotLayout3Dir");
        ClickRow(kCutTable, 0);
        SetMarks(0, 2);
        Calls();
        ClickEmptyRow(kCutTable);
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(Child<QLabel>("m_pCutPosLabel")->text(), QString("00:00:02/00:00:02"));
        for (const char* button : {"Play", "Start", "End", "Cut"}) {
            QVERIFY2(Enabled(button), button);
        }
    }

    void aFolderWithoutVideosEmptiesTheTable_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<QByteArray>("table");
        QTest::newRow("cut page") << QByteArray("btnSlotLayout3Dir") << QByteArray(kCutTable);
        QTest::newRow("merge page") << QByteArray("btnSlotLayout4Dir") << QByteArray(kSource);
    }

    void aFolderWithoutVideosEmptiesTheTable()
    {
        QFETCH(QByteArray, slot);
        QFETCH(QByteArray, table);
        const QTemporaryDir empty;
        OpenWindow();
        Call(slot.constData());
        QCOMPARE(Names(table.constData()), QStringList({"old.mp4", "-"}));
        Boxes().directory = empty.path();
        Call(slot.constData());
        QCOMPARE(Names(table.constData()), QStringList());
    }

    // The merge page lists its own folder, whatever the cut page shows.
    void theMergePageListsItsOwnFolderAfterTheCutPagesButton()
    {
        MakeVideo("in save.mp4");
        EnterCutPage();
        Call("btnSlotLayout3Dir");
        Call("btnEditSlot");
        QCOMPARE(Names(kSource), QStringList{"in save.mp4"});
    }

private:
    void ClickEmptyRow(const char* name)
    {
        auto* table = Child<QTableWidget>(name);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          table->visualRect(table->model()->index(1, 0)).center());
    }
};

QTEST_MAIN(FolderButtonTest)
#include "folder_button_test.moc"
