#include "tests/window/fake_tool.h"
#include "ui/tray_stand_in.h"

#include <QProcess>
#include <QWindow>

// The window that stands for the icon where there is no tray.
class TrayStandInTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void aStandInForTheIconAppearsWhereThereIsNoTray()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        TrayStandIn* standIn = StandIn();
        QVERIFY2(standIn != nullptr, "no stand-in");
        QCOMPARE(standIn->windowTitle(), QString("Recording"));
        QVERIFY(standIn->isMinimized());
        auto* elapsed = standIn->findChild<QLabel*>("m_pElapsed");
        QTRY_COMPARE(elapsed->text(), QString("00:00:01"));

        standIn->showNormal(); // like activating it in the task list
        QCoreApplication::processEvents();
        QVERIFY2(!Window().isVisible(), "the main window covers the stand-in");
        QVERIFY2(standIn->isVisible() && !standIn->isMinimized(), "it does not show itself");
        QVERIFY(DRUI::m_bIsStart);

        Click("Show window");
        QVERIFY2(Window().isVisible(), "its button does not bring the window back");
        QVERIFY2(standIn->isMinimized(), "it stays before the window");

        Window().hide();
        standIn->close();
        QTRY_VERIFY2(Window().isVisible(), "closing the stand-in did not bring the window back");
        QTRY_VERIFY2(StandIn() != nullptr, "the handle on the recording is gone");

        Call("btnSlotRecord");
        QCOMPARE(StandIn(), nullptr);
    }

    void theStandInsStopStopsLikeTheTrays()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        QVERIFY2(StandIn() != nullptr, "no stand-in");
        DRUI::m_nRecorderRet = -101; // the tray's Stop shows no message for it
        Click("Stop");
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(Window().isVisible());
        QCOMPARE(StandIn(), nullptr);
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    // A desktop that does not minimise it gives it the keyboard.
    void keysThatAreMeantForAnotherProgramDoNotStopTheRecording()
    {
        EnterRecordPage();
        for (const char* recording : {"first", "second"}) {
            Call("btnSlotRecord");
            QVERIFY2(StandIn() != nullptr, "no stand-in");
            StandIn()->showNormal();
            StandIn()->activateWindow();
            QTRY_VERIFY(StandIn()->isActiveWindow());
            QWindow* window = StandIn()->windowHandle();
            for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_A}) {
                QTest::keyClick(window, key);
                QVERIFY2(DRUI::m_bIsStart && !Window().isVisible(),
                         qPrintable(QString("typing stops the %1 recording").arg(recording)));
            }
            QTest::keyClick(window, Qt::Key_Tab);
            QTest::keyClick(window, Qt::Key_Space);
            QVERIFY2(!DRUI::m_bIsStart, "Stop cannot be reached with the keyboard");
            QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        }
    }

private:
    // The stand-in, if it is in the task list.
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

    static void Click(const QString& text) { PressButton(StandIn(), text); }
};

QTEST_MAIN(TrayStandInTest)
#include "tray_stand_in_test.moc"
