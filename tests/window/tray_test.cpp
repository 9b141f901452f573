#include "tests/window/fake_tool.h"
#include "ui/tray_stand_in.h"

#include <QAction>
#include <QMenu>
#include <QProcess>
#include <QSignalSpy>

class TrayTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theMenuHoldsPauseStopAndQuit()
    {
        EnterRecordPage();
        const QList<QAction*> entries = Icons().first()->contextMenu()->actions();
        QCOMPARE(entries.size(), 3);
        QCOMPARE(entries.at(0)->text(), QString("Pause"));
        QCOMPARE(entries.at(1)->text(), QString("Stop"));
        QCOMPARE(entries.at(2)->text(), QString("Quit"));
        for (QAction* entry : entries) {
            QVERIFY(!entry->icon().isNull());
            QCOMPARE(entry->parent(), &Window());
        }
        QCOMPARE(Icons().first()->toolTip(), QString("Lumenfold Screen Recorder"));
    }

    void pauseIsDisabledFromTheStartAndStaysSo()
    {
        EnterRecordPage();
        QAction* pause = Icons().first()->contextMenu()->actions().first();
        QVERIFY(!pause->isEnabled());
        Call("btnSlotRecord");
        QVERIFY(!pause->isEnabled());
        Call("btnSlotRecord");
        QVERIFY(!pause->isEnabled());
        QVERIFY(pause->text() == "Pause");
    }

    void theIconShowsWithTheFirstRecordingAndStays()
    {
        EnterRecordPage();
        QVERIFY(!Icons().first()->isVisible());
        Call("btnSlotRecord");
        QVERIFY(Icons().first()->isVisible());
        Call("btnSlotRecord");
        QVERIFY(Icons().first()->isVisible());
    }

    void enteringTheRecordPageTwiceMakesASecondIconThatOnlyARecordingShows()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        Call("btnSlotBack");
        Call("btnSlot");
        QCOMPARE(Icons().size(), 2);
        QVERIFY(Icons().at(0)->isVisible());
        QVERIFY(!Icons().at(1)->isVisible());
        Call("btnSlotRecord");
        QVERIFY(Icons().at(1)->isVisible());
    }

    void backLeavesTheRecordingRunning()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        Call("btnSlotBack");
        QCOMPARE(Page(), 0);
        QVERIFY(DRUI::m_bIsStart);
        QCOMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::Running);
    }

    void aClickBringsTheHiddenWindowBackAndTheOthersDoNot_data()
    {
        QTest::addColumn<int>("reason");
        QTest::addColumn<bool>("shown");
        QTest::newRow("click") << int(QSystemTrayIcon::Trigger) << true;
        QTest::newRow("double click") << int(QSystemTrayIcon::DoubleClick) << true;
        QTest::newRow("right click") << int(QSystemTrayIcon::Context) << false;
        QTest::newRow("middle click") << int(QSystemTrayIcon::MiddleClick) << false;
        QTest::newRow("unknown") << int(QSystemTrayIcon::Unknown) << false;
    }

    void aClickBringsTheHiddenWindowBackAndTheOthersDoNot()
    {
        QFETCH(int, reason);
        EnterRecordPage();
        Call("btnSlotRecord");
        QVERIFY(!Window().isVisible());
        Q_EMIT Icons().first()->activated(static_cast<QSystemTrayIcon::ActivationReason>(reason));
        QTEST(Window().isVisible(), "shown");
        QVERIFY2(DRUI::m_bIsStart, "the click stopped the recording");
    }

    void quitWhileRecordingStopsAndCloses()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        Icons().first()->contextMenu()->actions().at(2)->trigger();
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void quitWhileIdleStartsARecordingAndThenCloses()
    {
        EnterRecordPage();
        Icons().first()->contextMenu()->actions().at(2)->trigger();
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void stopAndStartWorkBeforeAnyIconWasMade()
    {
        OpenWindow();
        Call("btnSlotMenuStop");
        Call("doTimerRec");
        Call("btnSlotMenuStop");
        QVERIFY(Window().isVisible());
    }

    void aStandInForTheIconAppearsWhereThereIsNoTray()
    {
        QVERIFY2(!QSystemTrayIcon::isSystemTrayAvailable(), "this platform has a tray");
        EnterRecordPage();
        Call("btnSlotRecord");
        TrayStandIn* standIn = StandIn();
        QVERIFY2(standIn != nullptr, "no stand-in");
        QCOMPARE(standIn->windowTitle(), QString("Recording"));
        QVERIFY(standIn->isMinimized());

        standIn->showNormal(); // what activating it in the task list does
        QTRY_VERIFY2(Window().isVisible(), "activating the stand-in did not bring the window back");
        QVERIFY(DRUI::m_bIsStart);
        QTRY_VERIFY(standIn->isMinimized());

        Window().hide();
        standIn->close();
        QTRY_VERIFY2(Window().isVisible(), "closing the stand-in did not bring the window back");

        Call("btnSlotRecord");
        QCOMPARE(StandIn(), nullptr);
    }

private:
    QList<QSystemTrayIcon*> Icons() { return Window().findChildren<QSystemTrayIcon*>(); }

    // The stand-in, while it is in the task list.
    static TrayStandIn* StandIn()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            auto* standIn = qobject_cast<TrayStandIn*>(widget);
            if (standIn != nullptr && standIn->isVisible()) {
                return standIn;
            }
        }
        return nullptr;
    }
};

QTEST_MAIN(TrayTest)
#include "tray_test.moc"
