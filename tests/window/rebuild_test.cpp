#include "tests/window/job_tool.h"

// btnMaxSlot() has no control, but the pages it rebuilds have to work.
class RebuildTest : public VideoPageTest
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        PrepareVideos();
        MakeVideo("new.mp4", "00:00:11");
        MakeVideo("old.mp4", "00:00:22");
        EnterCutPage();
        Call("btnEditSlot");
        for (const int row : {1, 0, 1}) {
            ClickRow("m_pSourceVideoTable", row);
            Press("Add");
        }
    }
    void cleanup() { FinishVideos(); }

    void theTablesKeepTheirRows()
    {
        for (int i = 0; i < 2; ++i) { // maximise, restore
            const QStringList target = Rows("m_pTargetVideoTable");
            const QStringList source = Rows("m_pSourceVideoTable");
            Call("btnMaxSlot");
            QCOMPARE(Names("m_pCutVideoTable"), QStringList({"new.mp4", "old.mp4"}));
            QCOMPARE(Rows("m_pSourceVideoTable"), source);
            QCOMPARE(Rows("m_pTargetVideoTable"), target);
            QCOMPARE(target.first(), QString("old.mp4, 9 Bytes, 00:00:22"));
            QCOMPARE(Page(), 3);
        }
        const auto* item = Child<QTableWidget>("m_pCutVideoTable")->item(0, 0);
        QCOMPARE(item->foreground().color(), QColor(Qt::white));
        QVERIFY(!Child<QTableWidget>("m_pTargetVideoTable")->item(2, 0)->icon().isNull());
    }

    void theButtonsAreInTheirFirstStateWhateverTheListHolds()
    {
        QVERIFY(Enabled("Merge"));
        Call("btnMaxSlot");
        QVERIFY(!Enabled("Merge"));
        QVERIFY(!Enabled("Add"));
        ClickRow("m_pSourceVideoTable", 0);
        Press("Add");
        QVERIFY(Enabled("Merge"));
        QCOMPARE(Names("m_pTargetVideoTable").size(), 4);
    }

    // Twenty entries survived the rebuild, which disabled Merge. One more is refused.
    void aRefusedEntryEnablesMergeAgain()
    {
        ClickRow("m_pSourceVideoTable", 0);
        while (Names("m_pTargetVideoTable").size() < 20) {
            Call("btnAddSlot");
        }
        Call("btnMaxSlot");
        QVERIFY(!Enabled("Merge"));
        Call("btnAddSlot");
        QCOMPARE(Boxes().texts.size(), 1);
        QCOMPARE(Names("m_pTargetVideoTable").size(), 20);
        QVERIFY(Enabled("Merge"));
    }

    void theRestoredListCanBeMerged()
    {
        Call("btnMaxSlot");
        Calls();
        Call("btnSlotLayout4Merge");
        const QStringList calls = Calls();
        QCOMPARE(calls.size(), 4);
        QVERIFY(calls.at(0).startsWith("<-i><" + SaveDirectory() + "/old.mp4>"));
        QVERIFY(calls.at(1).startsWith("<-i><" + SaveDirectory() + "/new.mp4>"));
    }

    void aLongNameFitsTheRecord()
    {
        const QString name = QString(251, 'n') + ".mp4";
        MakeVideo(name);
        Call("btnEditSlot");
        ClickRow("m_pSourceVideoTable", 2);
        Press("Add");
        Call("btnMaxSlot");
        QCOMPARE(Names("m_pTargetVideoTable").last(), name);
    }

    void theEmptyRowsOfTheFolderButtonStayEmpty()
    {
        Boxes().directory = SaveDirectory();
        Call("btnSlotLayout4Dir");
        Call("btnSlotLayout3Dir");
        Call("btnMaxSlot");
        QCOMPARE(Names("m_pSourceVideoTable"), QStringList({"old.mp4", "-"}));
        QCOMPARE(Names("m_pCutVideoTable"), QStringList({"old.mp4", "-"}));
    }

    void theSettingsAreReadAndTheDevicesListedAgain()
    {
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=/new/place\n");
        InstallTool("#!/bin/sh\nprintf '%s ' \"$@\" >>\"$(dirname \"$0\")/calls\"\n");
        Calls();
        Call("btnMaxSlot");
        QCOMPARE(Child<QLineEdit>("m_pLayout3DirEdit")->text(), QString("/new/place"));
        QCOMPARE(Child<QLineEdit>("m_pLayout4DirEdit")->text(), QString("/new/place"));
        QCOMPARE(Calls().join(' ').count("-list_devices"), 1);
    }

    void aFieldThatIsRebuiltWithTheCursorInItReadsNothing()
    {
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Child<QLineEdit>("m_pLayout4DirEdit")->setFocus();
        Calls();
        Call("btnMaxSlot");
        QCOMPARE(Calls(), QStringList());
        Leave("m_pLayout4DirEdit"); // the new field is watched too
        QCOMPARE(Calls().size(), 2);
    }

    void aWindowThatGoesWithTheCursorInAFieldReadsNothing()
    {
        QVERIFY(QTest::qWaitForWindowActive(&Window()));
        Child<QLineEdit>("m_pLayout4DirEdit")->setFocus();
        Calls();
        CloseWindow();
        QCOMPARE(Calls(), QStringList());
    }

    void theMaximisedCutPageFillsTheWindow()
    {
        Call("btnMaxSlot");
        Press("Back");
        Call("btnMontageSlot");
        QCOMPARE(Child<QWidget>("m_pLayout3Widget")->size(), Window().size());
    }

private:
    QStringList Rows(const char* name)
    {
        QStringList rows;
        auto* table = Child<QTableWidget>(name);
        for (int row = 0; row < table->rowCount(); ++row) {
            QStringList texts;
            for (int column = 0; column < 3; ++column) {
                texts << table->item(row, column)->text();
            }
            rows << texts.join(", ");
        }
        return rows;
    }
};

QTEST_MAIN(RebuildTest)
#include "rebuild_test.moc"
