#include "tests/window/fake_tool.h"

#include <QAction>
#include <QMenu>
#include <QProcess>
#include <QTimer>

class TrayTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void thePicturesTellWhatARecordingDoes()
    {
        EnterRecordPage();
        QCOMPARE(Pictures(), QString("pause stop quit, tray rec1")); // idle
        Call("btnSlotRecord");
        BlinkToTheSecondImage();
        QCOMPARE(Pictures(), QString("pause stop quit, tray rec2"));
        Call("btnSlotRecord");
        QCOMPARE(Pictures(), QString("pause play quit, tray rec1")); // stopped
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);

        Call("btnSlotMenuStop");
        BlinkToTheSecondImage();
        QCOMPARE(Pictures(), QString("pause stop quit, tray rec2")); // started from the menu
        Call("btnSlotMenuPause");
        QCOMPARE(Pictures(), QString("play stop quit, tray rec1")); // paused
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Call("btnSlotMenuPause");
        QCOMPARE(Pictures(), QString("pause stop quit, tray rec1")); // resumed
        BlinkToTheSecondImage();
        Call("btnSlotMenuStop");
        QCOMPARE(Pictures(), QString("pause play quit, tray rec1")); // stopped from the menu
    }

    void aStopWhilePausedLeavesNoPause_data()
    {
        QTest::addColumn<QByteArray>("stop");
        QTest::newRow("by the button") << QByteArray("btnSlotRecord");
        QTest::newRow("by the menu") << QByteArray("btnSlotMenuStop");
    }

    void aStopWhilePausedLeavesNoPause()
    {
        QFETCH(QByteArray, stop);
        EnterRecordPage();
        Call("btnSlotRecord");
        Call("btnSlotMenuPause");
        QVERIFY(DRUI::m_bIsPause);
        QAction* pause = Icons().first()->contextMenu()->actions().first();
        QCOMPARE(pause->text(), QString("Start"));
        Call(stop.constData());
        QVERIFY2(!DRUI::m_bIsPause, "the next recording's display begins paused");
        QCOMPARE(pause->text(), QString("Pause"));
        QCOMPARE(Pictures(), QString("pause play quit, tray rec1"));
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
        EnterRecordPageTwice();
        QCOMPARE(Icons().size(), 2);
        QVERIFY(Icons().at(0)->isVisible());
        QVERIFY(!Icons().at(1)->isVisible());
        Call("btnSlotRecord");
        QVERIFY(Icons().at(1)->isVisible());
    }

    void aStartFromTheMenuShowsNoHiddenIcon()
    {
        EnterRecordPageTwice();
        QCOMPARE(Icons().size(), 2);
        Icons().first()->contextMenu()->actions().at(1)->trigger();
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(Icons().at(0)->isVisible());
        QVERIFY2(!Icons().at(1)->isVisible(), "the start from the menu showed the second icon");
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
        m_seen.clear();
        Window().installEventFilter(this);
        Q_EMIT Icons().first()->activated(static_cast<QSystemTrayIcon::ActivationReason>(reason));
        QTEST(Window().isVisible(), "shown");
        QTEST(m_seen.contains(QEvent::ZOrderChange), "shown"); // raised over other windows
        QVERIFY2(DRUI::m_bIsStart, "the click stopped the recording");
    }

    void aClickActivatesAWindowThatIsShownAlready()
    {
        EnterRecordPage();
        QWidget other;
        other.show();
        other.activateWindow();
        QTRY_VERIFY(other.isActiveWindow());
        Q_EMIT Icons().first()->activated(QSystemTrayIcon::Trigger);
        QTRY_VERIFY2(Window().isActiveWindow(), "keys still go to the other window");
    }

    void aClickBringsAMinimisedWindowBackToItsSize()
    {
        EnterRecordPage();
        Window().showMinimized();
        QVERIFY(Window().isMinimized());
        Q_EMIT Icons().first()->activated(QSystemTrayIcon::Trigger);
        QVERIFY(!Window().isMinimized());
        QCOMPARE(Window().size(), QSize(1000, 600));
        QVERIFY2(!DRUI::m_bIsStart, "the click started a recording");
    }

    void quitWhileRecordingStopsAndCloses()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        m_seen.clear();
        Window().installEventFilter(this);
        Icons().first()->contextMenu()->actions().at(2)->trigger();
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        QCOMPARE(m_seen, QList<QEvent::Type>({QEvent::Show, QEvent::Close, QEvent::Hide}));
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void quitWhileIdleStartsARecordingAndThenCloses()
    {
        EnterRecordPage();
        m_seen.clear();
        Window().installEventFilter(this);
        Icons().first()->contextMenu()->actions().at(2)->trigger();
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        // The start has already hidden the window. The close after that ends the program.
        QCOMPARE(m_seen, QList<QEvent::Type>({QEvent::Hide, QEvent::Close}));
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

public:
    bool eventFilter(QObject* /*watched*/, QEvent* event) override
    {
        switch (event->type()) {
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::Close:
        case QEvent::ZOrderChange:
            m_seen << event->type();
            break;
        default:
            break;
        }
        return false;
    }

private:
    // The second time after a recording. Each call creates an icon.
    void EnterRecordPageTwice()
    {
        EnterRecordPage();
        Call("btnSlotRecord");
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        Call("btnSlotBack");
        Call("btnSlot");
    }

    QList<QSystemTrayIcon*> Icons()
    {
        return Window().findChildren<QSystemTrayIcon*>("m_pTrayIcon");
    }

    // The image under ":/image/" that the icon shows.
    static QString Name(const QIcon& icon)
    {
        const QImage shown = icon.pixmap(22, 22).toImage();
        for (const char* name : {"pause", "play", "stop", "quit", "rec1", "rec2"}) {
            if (shown == QIcon(QString(":/image/%1.png").arg(name)).pixmap(22, 22).toImage()) {
                return name;
            }
        }
        return "another";
    }

    // What the menu entries show, in order, and the icon itself.
    QString Pictures()
    {
        QStringList names;
        for (QAction* entry : Icons().first()->contextMenu()->actions()) {
            names << Name(entry->icon());
        }
        return names.join(' ') + ", tray " + Name(Icons().first()->icon());
    }

    // Triggers the timer until the icon is not what a stop or a pause would show.
    void BlinkToTheSecondImage()
    {
        Child<QTimer>("m_pRecTimer")->stop();
        for (int tick = 0; tick < 32 && Name(Icons().first()->icon()) != "rec2"; ++tick) {
            Call("doTimerRec");
        }
    }

    QList<QEvent::Type> m_seen; // events of the watched window
};

QTEST_MAIN(TrayTest)
#include "tray_test.moc"
