#include "tests/window/fake_tool.h"

#include <QAction>
#include <QComboBox>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QTimer>

class RecordingTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup() { CloseWindow(); }

    void recordHidesTheWindowAndShowsTheStatus()
    {
        EnterRecordPage();
        QCOMPARE(Button(), QString("Record"));
        Press("Record");
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        QCOMPARE(Button(), QString("Stop"));
        QVERIFY(Child<QSystemTrayIcon>("")->isVisible());
        QCOMPARE(Entry(1)->text(), QString("Stop"));
        QCOMPARE(Child<QTimer>("m_pRecTimer")->interval(), 200);
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:0"));
        QTRY_VERIFY2(!DRUI::m_pStereoMix->text().endsWith("\n0 Bytes"),
                     "the file's size is not shown");
        QVERIFY(!DRUI::m_pStereoMix->isHidden());
        QVERIFY2(DRUI::m_pStereoMix->height() >= DRUI::m_pStereoMix->sizeHint().height(),
                 "the status text is cut off");
    }

    void theToolGetsTheCommandOfTheAudioChoice_data()
    {
        QTest::addColumn<QString>("choice");
        QTest::addColumn<QStringList>("inputs");
        const QStringList first{"-f", "avfoundation", "-framerate", "30", "-i"};
        QTest::newRow("both") << "Computer sounds and Microphone"
                              << first + QStringList{"1:0", "-f", "avfoundation", "-i", "1:2"};
        QTest::newRow("sounds") << "Computer sounds" << first + QStringList{"1:2"};
        QTest::newRow("microphone") << "Microphone" << first + QStringList{"1:0"};
        QTest::newRow("none") << "None" << first + QStringList{"1"};
    }

    void theToolGetsTheCommandOfTheAudioChoice()
    {
        QFETCH(QString, choice);
        QFETCH(QStringList, inputs);
        EnterRecordPage();
        DRUI::m_pAudioComBox->setCurrentText(choice);
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const QStringList fixed{
            "-ar",  "44100",  "-r", "29.97",    "-preset", "ultrafast", "-max_muxing_queue_size",
            "9999", "-async", "1",  "-pix_fmt", "yuv420p"};
        QCOMPARE(ToolArguments(),
                 inputs + fixed + QStringList{SaveDirectory() + '/' + Recordings().first()});
    }

    void theFileIsNamedByItsStart()
    {
        EnterRecordPage();
        const QDateTime before = QDateTime::currentDateTime();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const auto named = QDateTime::fromString(Recordings().first(), "yyyy-MM-dd hh-mm-ss'.mp4'");
        QVERIFY2(named.isValid(), qPrintable(Recordings().first()));
        QVERIFY(before.secsTo(named) >= -1 && before.secsTo(named) <= 5);
    }

    void theSecondPressStopsAndTheToolFinishes()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(Window().isVisible());
        QCOMPARE(Button(), QString("Start")); // not "Record" any more
        QVERIFY(DRUI::m_pStereoMix->isHidden());
        QVERIFY(!Child<QTimer>("m_pRecTimer")->isActive());
        QTRY_COMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        QVERIFY(ReadFile(BesideProgram("keys")).startsWith("q"));
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
    }

    void aRunningRecordingIsNotAskedToQuit()
    {
        EnterRecordPage();
        Press("Record");
        QSignalSpy output(Child<QProcess>("m_pRecProcess"), SIGNAL(readyRead()));
        QTRY_VERIFY(output.count() >= 5);
        QVERIFY(!QFile::exists(BesideProgram("keys")));
    }

    void theTrayStopsAndStartsAgain()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Entry(1)->trigger();
        QVERIFY(Window().isVisible());
        QCOMPARE(Entry(1)->text(), QString("Start"));
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);

        Entry(1)->trigger();
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        QCOMPARE(Entry(1)->text(), QString("Stop"));
        QCOMPARE(Button(), QString("Stop"));
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("xx"));
    }

    void aNameThatIsTakenIsNumberedAndTheFileKept()
    {
        QVERIFY(QDir().mkpath(SaveDirectory()));
        const QDateTime now = QDateTime::currentDateTime();
        for (int i = 0; i < 30; ++i) { // every second that the test may need
            WriteFile(SaveDirectory() + now.addSecs(i).toString("/yyyy-MM-dd hh-mm-ss'.mp4'"),
                      "mine");
        }
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 31);
        QVERIFY2(ToolArguments().last().endsWith(" (1).mp4"), qPrintable(ToolArguments().last()));
        for (int i = 0; i < 30; ++i) {
            QCOMPARE(
                ReadFile(SaveDirectory() + now.addSecs(i).toString("/yyyy-MM-dd hh-mm-ss'.mp4'")),
                QByteArray("mine"));
        }
    }

    void pauseStopsTheDisplayOnlyAndResumeAsksForASecondStart()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotMenuPause");
        QVERIFY(DRUI::m_bIsPause);
        QVERIFY(!Child<QTimer>("m_pRecTimer")->isActive());
        QVERIFY(DRUI::m_pStereoMix->isHidden());
        QCOMPARE(Entry(0)->text(), QString("Start"));
        QCOMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::Running);

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Call("btnSlotMenuPause");
        QVERIFY(!DRUI::m_bIsPause);
        QCOMPARE(Entry(0)->text(), QString("Pause"));
        QVERIFY(Child<QTimer>("m_pRecTimer")->isActive());
        QCOMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        Call("btnSlotMenuStop");
        QTRY_COMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void afterAResumeTheTimeCountsAnewAndTheSizeIsThatOfAFileThatIsNeverMade()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().contains("00:00:01"));
        Call("btnSlotMenuPause");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Call("btnSlotMenuPause");
        Call("doTimerRec");
        QCOMPARE(DRUI::m_pStereoMix->text(), QString("Recording... \n\n00:00:00\n\n0 Bytes"));
        QCOMPARE(Recordings().size(), 1);
        Call("btnSlotMenuStop");
        QTRY_COMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void theBlinkingGoesOnWhereTheRecordingBeforeLeftIt()
    {
        EnterRecordPage();
        for (int recording = 0; recording < 2; ++recording) {
            Press(recording == 0 ? "Record" : "Start");
            Child<QTimer>("m_pRecTimer")->stop();
            QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::Running);
            for (int tick = 1; tick <= 10; ++tick) {
                Call("doTimerRec");
            }
            const QImage shown = Child<QSystemTrayIcon>("")->icon().pixmap(22, 22).toImage();
            QVERIFY(shown == Picture(recording == 0 ? ":/image/rec1.png" : ":/image/rec2.png"));
            Call("btnSlotMenuStop");
            QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        }
    }

    void theIconBlinksWhileRecording()
    {
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        auto* icon = Child<QSystemTrayIcon>("");
        const QImage first = Picture(":/image/rec1.png");
        const QImage second = Picture(":/image/rec2.png");
        QVERIFY(first != second);
        for (int tick = 1; tick <= 32; ++tick) {
            Call("doTimerRec");
            const QImage shown = icon->icon().pixmap(22, 22).toImage();
            QVERIFY2(shown == (tick <= 16 ? first : second),
                     qPrintable(QString("tick %1").arg(tick)));
        }
    }

    void recordPressedAsFastAsAMachineCanLosesNoFile()
    {
        EnterRecordPage();
        for (int i = 0; i < 50; ++i) {
            Call("btnSlotRecord");
            AnswerBoxes();
        }
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    void aStopForAnyOtherReasonSaysThatTheFileFailed()
    {
        EnterRecordPage();
        Press("Record");
        DRUI::m_nRecorderRet = 1;
        QCOMPARE(MessageAfter("btnSlotRecord"),
                 QString("Recorder: Record failed. Create mp4 file failed."));
        QCOMPARE(DRUI::m_nRecorderRet, 0);
    }

    void theTraysStopShowsNoMessageForTheResult()
    {
        EnterRecordPage();
        Press("Record");
        DRUI::m_nRecorderRet = -101;
        Call("btnSlotMenuStop"); // a message would block here
        QVERIFY(Window().isVisible());
        QCOMPARE(DRUI::m_nRecorderRet, -101);
    }

    void aRelativeDirectoryHasNoSpaceAndStopsTheRecording()
    {
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=relative\n");
        EnterRecordPage();
        Press("Record");
        QCOMPARE(MessageAfter("doTimerRec"),
                 QString("Recorder: Not enough space, recording stopped."));
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(Window().isVisible());
    }

    void aToolThatDoesNotStartIsToldAfterTheStop()
    {
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Press("Record");
        QVERIFY(DRUI::m_bIsStart);
        QTRY_VERIFY(DRUI::m_pStereoMix->text().endsWith("\n\n0 Bytes"));
        const QString message = MessageAfter("btnSlotRecord");
        QCOMPARE(message, QString("Tarvessa Data Tool: The recording could not be started: "
                                  "tool: No such file or directory"));
    }

    void quitTellsItTooAndClosesThen()
    {
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Press("Record");
        QVERIFY(MessageAfter("btnSlotMenuQuit").contains("could not be started"));
        QVERIFY(!Window().isVisible());
    }

    void anEmptySaveDirectoryHarmsNothing()
    {
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=\n");
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        Call("btnSlotMenuStop");
        QVERIFY(Window().isVisible());
    }

    void theCountersThatNothingReadsAreZero()
    {
        DRUI::m_n64AudioFrames = 5;
        EnterRecordPage();
        QCOMPARE(DRUI::m_n64AudioFrames, 0);
        for (const char* slot :
             {"btnSlotRecord", "btnSlotRecord", "btnSlotMenuStop", "btnSlotMenuStop"}) {
            DRUI::m_n64AudioFrames = 5;
            AnswerBoxes();
            Call(slot);
            QCOMPARE(DRUI::m_n64AudioFrames, 0);
        }
        QCOMPARE(Window().StartRecord(), 0);
    }

private:
    QString Button() { return Child<QPushButton>("m_pRecordBtn")->text(); }

    QAction* Entry(int position)
    {
        return Window().findChildren<QSystemTrayIcon*>().last()->contextMenu()->actions().at(
            position);
    }

    static QImage Picture(const QString& name) { return QIcon(name).pixmap(22, 22).toImage(); }

    // Closes whatever modal dialog the next seconds bring, and keeps "title: text".
    void AnswerBoxes()
    {
        m_message.clear();
        m_answer.disconnect();
        connect(&m_answer, &QTimer::timeout, this, [this] {
            QWidget* box = QApplication::activeModalWidget();
            if (box == nullptr) {
                return;
            }
            auto* text = box->findChild<QLabel*>("m_pMessageLabel");
            auto* standard = qobject_cast<QMessageBox*>(box);
            m_message =
                box->windowTitle() + ": " + (standard != nullptr ? standard->text() : text->text());
            box->close();
        });
        m_answer.start(10);
    }

    QString MessageAfter(const char* slot)
    {
        AnswerBoxes();
        [&] { Call(slot); }();
        return m_message;
    }

    QTimer m_answer;
    QString m_message;
};

QTEST_MAIN(RecordingTest)
#include "recording_test.moc"
