// A recording on a desktop without a tray when the session ends. The session state is simulated.
#include "tests/window/fake_tool.h"
#include "ui/tray_stand_in.h"

namespace {
bool g_isSavingSession = false;
}

// NOLINTBEGIN: the linker's name of QGuiApplication::isSavingSession()
extern "C" {
bool __wrap__ZNK15QGuiApplication15isSavingSessionEv(const QGuiApplication* application);
bool __wrap__ZNK15QGuiApplication15isSavingSessionEv(const QGuiApplication* /*application*/)
{
    return g_isSavingSession;
}
}
// NOLINTEND

class LogOutTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup()
    {
        g_isSavingSession = false;
        CloseWindow();
    }

    void theStandInLetsTheUserLogOut_data()
    {
        QTest::addColumn<bool>("loggingOut");
        QTest::newRow("logging out") << true;
        QTest::newRow("closed by hand") << false;
    }

    void theStandInLetsTheUserLogOut()
    {
        QFETCH(bool, loggingOut);
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        TrayStandIn* standIn = StandIn();
        QVERIFY2(standIn != nullptr, "no stand-in");
        g_isSavingSession = loggingOut;
        QVERIFY2(standIn->close(), "a refused close would stop the user from logging out");
        QCOMPARE(Window().isVisible(), !loggingOut); // closed by hand, it brings the window back
        QVERIFY2(DRUI::m_bIsStart, "the recording ended with the stand-in");
        QTRY_VERIFY2(standIn->isVisible(), "after a log-out that was called off it is missing");
        QVERIFY(standIn->isMinimized());
    }

private:
    static TrayStandIn* StandIn()
    {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* standIn = qobject_cast<TrayStandIn*>(widget)) {
                return standIn;
            }
        }
        return nullptr;
    }
};

QTEST_MAIN(LogOutTest)
#include "log_out_test.moc"
