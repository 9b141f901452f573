#include "jobs/text_codec.h"
#include "jobs/tool_runner.h"
#include "tests/window/fake_tool.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QMetaMethod>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QTimer>

#include <csignal>

namespace {

// The order of the meta-object, which other builds rely on.
const QList<QByteArray> kMethods = {
    "AddProcessCallBack(int,QString,QString,int)",
    "CutProcessCallBack(int,QString,QString,int)",
    "btnMinSlot()",
    "btnMaxSlot()",
    "btnCloseSlot()",
    "btnSlot()",
    "btnEditSlot()",
    "btnMontageSlot()",
    "btnAddSlot()",
    "btnSlotBack()",
    "btnSlotRecord()",
    "btnSlotLayout4Dir()",
    "btnSlotLayout4Merge()",
    "btnSlotLayout3Dir()",
    "btnSlotLayout3Cut()",
    "btnSlotLayout2Dir()",
    "btnUpSlot()",
    "btnDownSlot()",
    "btnDelSlot()",
    "mplayerDataRecieve()",
    "current(int)",
    "btnOpenUrl(QString)",
    "btnHelpSlot()",
    "btnSupportSlot()",
    "btnAboutSlot()",
    "btnLayout3Play()",
    "btnSetHead()",
    "btnSetTail()",
    "CutVedio(WCHAR*,int&)",
    "btnSlotMenuStop()",
    "btnSlotMenuPause()",
    "btnSlotMenuQuit()",
    "itemClick(QTreeWidgetItem*,int)",
    "itemDiskClick(QTreeWidgetItem*,int)",
    "TargetTableItemClick(QTableWidgetItem*)",
    "SourceTableItemClick(QTableWidgetItem*)",
    "SourceTableItemDoubleClick(QTableWidgetItem*)",
    "CutTableItemClick(QTableWidgetItem*)",
    "CutTableItemDoubleClick(QTableWidgetItem*)",
    "trayiconActivated(QSystemTrayIcon::ActivationReason)",
    "ComBoxIndexChange(int)",
    "doTimerRec()",
    "ReadRecordInfo()",
    "ReadMergeInfo()",
    "ReadChange2TSInfo()",
    "ReadCutInfo()",
    "ReadDeviceInfo()",
};

} // namespace

class WindowFrameTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void theMetaObjectHasItsTwoSignalsAnd45SlotsInOrder()
    {
        const QMetaObject& meta = DRUI::staticMetaObject;
        QCOMPARE(meta.methodCount() - meta.methodOffset(), 47);
        for (int i = 0; i < kMethods.size(); ++i) {
            const QMetaMethod method = meta.method(meta.methodOffset() + i);
            QCOMPARE(method.methodSignature(), kMethods.at(i));
            QCOMPARE(method.methodType(), i < 2 ? QMetaMethod::Signal : QMetaMethod::Slot);
            QCOMPARE(method.access(), i < 2 ? QMetaMethod::Protected : QMetaMethod::Private);
            QCOMPARE(QByteArray(method.typeName()), QByteArray(i == 28 ? "HRESULT" : "void"));
        }
    }

    void theWindowInstallsTheCodecOnceMore()
    {
        InstallTextCodec("ISO-8859-1");
        const DRUI window;
        QCOMPARE(FromEightBit(QByteArray("\xc4\xe3")), QString::fromUtf8("\u4f60"));
    }

    void theWindowIsFixedAndCentredOnTheDesktop()
    {
        DRUI& window = OpenWindow();
        QCOMPARE(window.windowTitle(), QString("Lumenfold Screen Recorder"));
        QCOMPARE(window.objectName(), QString("DRUIClass"));
        QCOMPARE(window.size(), QSize(1000, 600));
        QCOMPARE(window.minimumSize(), window.maximumSize());
        const QSize desktop = QGuiApplication::primaryScreen()->geometry().size();
        QCOMPARE(window.pos(), QPoint((desktop.width() - 1000) / 2, (desktop.height() - 600) / 2));
        QCOMPARE(window.centralWidget()->objectName(), QString("centralWidget"));
        QCOMPARE(window.centralWidget()->styleSheet(),
                 QString("background-color: rgb(51, 52, 55);"));
    }

    void sixProcessesMergeTheirOutputForTheirSlots()
    {
        OpenWindow();
        for (const auto& [name, slot] : {std::pair("m_pPlayerProcess", SLOT(mplayerDataRecieve())),
                                         {"m_pDevProcess", SLOT(ReadDeviceInfo())},
                                         {"m_pRecProcess", SLOT(ReadRecordInfo())},
                                         {"m_pChangeTSProcess", SLOT(ReadChange2TSInfo())},
                                         {"m_pMergeProcess", SLOT(ReadMergeInfo())},
                                         {"m_pCutProcess", SLOT(ReadCutInfo())}}) {
            auto* process = Child<QProcess>(name);
            QVERIFY2(process != nullptr, name);
            QCOMPARE(process->processChannelMode(), QProcess::MergedChannels);
            QCOMPARE(process->parent(), &Window());
            QVERIFY2(disconnect(process, SIGNAL(readyRead()), &Window(), slot), name);
        }
        QCOMPARE(Window().findChildren<QProcess*>().size(), 6);
    }

    void theTimerOfTheRecordingWaits()
    {
        OpenWindow();
        auto* timer = Child<QTimer>("m_pRecTimer");
        QVERIFY2(timer != nullptr, "the timer is no child of the window");
        QVERIFY(!timer->isActive());
        QVERIFY(disconnect(timer, SIGNAL(timeout()), &Window(), SLOT(doTimerRec())));
    }

    void thePagesStandInOrderAndHomeIsFirst()
    {
        OpenWindow();
        auto* stack = Child<QStackedLayout>("m_pStack");
        QCOMPARE(stack->count(), 4);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(stack->widget(i)->objectName(), QString("m_pLayout%1Widget").arg(i + 1));
        }
        QCOMPARE(Page(), 0);
        QCOMPARE(Window().centralWidget()->layout()->contentsMargins(), QMargins());
    }

    void everyPageIsEnteredFromHomeAndLeftByBack_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::addColumn<int>("page");
        QTest::newRow("record") << QByteArray("btnSlot") << 1;
        QTest::newRow("cut") << QByteArray("btnMontageSlot") << 2;
        QTest::newRow("merge") << QByteArray("btnEditSlot") << 3;
    }

    void everyPageIsEnteredFromHomeAndLeftByBack()
    {
        QFETCH(QByteArray, slot);
        OpenWindow();
        Call(slot.constData());
        QTEST(Page(), "page");
        Press("Back");
        QCOMPARE(Page(), 0);
    }

    void escapeIsSwallowedOnEveryPageAndOtherKeysAreNot()
    {
        DRUI& window = OpenWindow();
        auto* stack = Child<QStackedLayout>("m_pStack");
        for (int page = 0; page < 4; ++page) {
            stack->setCurrentIndex(page);
            for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_F5}) {
                QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
                QCoreApplication::sendEvent(&window, &press);
                QCOMPARE(press.isAccepted(), key == Qt::Key_Escape);
                QCOMPARE(Page(), page);
                QVERIFY(window.isVisible());
            }
        }
    }

    void theFolderFieldsStartWithTheSaveDirectory()
    {
        OpenWindow();
        QCOMPARE(Child<QLineEdit>("m_pLayout3DirEdit")->text(), SaveDirectory());
        QCOMPARE(Child<QLineEdit>("m_pLayout4DirEdit")->text(), SaveDirectory());
    }

    void maximiseFillsTheDesktopAndRestoreGoesBackOnTheSamePage()
    {
        DRUI& window = OpenWindow();
        Call("btnSlot");
        Call("btnMaxSlot");
        QCOMPARE(window.size(), QGuiApplication::primaryScreen()->geometry().size());
        QCOMPARE(window.pos(), QPoint(0, 0));
        QCOMPARE(Page(), 1);
        QCOMPARE(Child<QStackedLayout>("m_pStack")->count(), 4);
        QCOMPARE(Child<QPushButton>("m_pRecordBtn")->x(), window.width() - 151);
        Call("btnMaxSlot");
        QCOMPARE(window.size(), QSize(1000, 600));
        QCOMPARE(Page(), 1);
        QCOMPARE(Child<QPushButton>("m_pRecordBtn")->x(), 849);
        Call("btnMaxSlot");
        QCOMPARE(window.size(), QGuiApplication::primaryScreen()->geometry().size());
    }

    void minimiseAndCloseDoWhatTheySay()
    {
        DRUI& window = OpenWindow();
        Call("btnMinSlot");
        QVERIFY(window.isMinimized());
        Call("btnCloseSlot");
        QVERIFY(!window.isVisible());
    }

    void closingAsksNothingAndTheDestructorFinishesTheRecording()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Window().close();
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        QVERIFY(!DRUI::m_bIsStart);
    }

    void closingWaitsForNothingWhenNoRecordingRuns()
    {
        OpenWindow();
        QElapsedTimer time;
        time.start();
        CloseWindow();
        QVERIFY2(time.elapsed() < kToolWaitMs / 6,
                 qPrintable(QString("closing took %1 ms").arg(time.elapsed())));
        QVERIFY(!QFile::exists(BesideProgram("starts")));
    }

    void runningProcessesEndWithTheWindow_data()
    {
        QTest::addColumn<QByteArray>("name");
        for (const char* name : {"m_pPlayerProcess", "m_pDevProcess", "m_pChangeTSProcess",
                                 "m_pMergeProcess", "m_pCutProcess"}) {
            QTest::newRow(name) << QByteArray(name);
        }
    }

    void runningProcessesEndWithTheWindow()
    {
        QFETCH(QByteArray, name);
        OpenWindow();
        auto* process = Child<QProcess>(name.constData());
        process->start("sleep", {"600"});
        QVERIFY(process->waitForStarted());
        const auto pid = static_cast<pid_t>(process->processId());
        CloseWindow();
        QVERIFY2(kill(pid, 0) != 0, "the process goes on");
    }

    void theEventFilterSwallowsNothing()
    {
        class Filter : public DRUI
        {
        public:
            using DRUI::eventFilter;
        };
        Filter window;
        window.Init();
        auto* field = window.findChild<QLineEdit*>("m_pLayout4DirEdit");
        for (const auto type : {QEvent::FocusOut, QEvent::FocusIn}) {
            QFocusEvent event(type);
            QVERIFY2(!window.eventFilter(field, &event), "the field does not hear of its focus");
        }
        QKeyEvent key(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a");
        QVERIFY2(!window.eventFilter(field, &key), "the field cannot be typed in");
    }

    void aWindowThatWasNeverInitialisedCanGo()
    {
        const DRUI window;
        QCOMPARE(window.size(), QSize(1000, 600));
    }
};

QTEST_MAIN(WindowFrameTest)
#include "window_frame_test.moc"
