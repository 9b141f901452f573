#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QAction>
#include <QMenu>
#include <QProcess>
#include <QPushButton>
#include <QTimer>

namespace {

// Prints only when the test lets it: nothing until "stopped" exists beside it, then three times,
// each after an answer. Records the answers in "keys", with "early" for a key that came without
// output.
constexpr auto kSilentTool = R"(#!/bin/bash
here=$(dirname "$0")
if [[ "$*" == *-list_devices* ]]; then cat "$here/listing" >&2; exit 1; fi
printf 'x' >>"$here/starts"
until [[ -e "$here/stopped" ]]; do sleep 0.01; done
if read -t 0; then printf 'early ' >>"$here/keys"; fi
for output in 1 2 3; do
    printf 'frame=    %d\r' $output >&2
    read -r -t 10 -N 3 answer || exit
    printf '%s' "$answer" >>"$here/keys"
done
printf 'finished' >"$here/finished"
)";

} // namespace

class RecordingTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }
    void cleanup()
    {
        WriteFile(BesideProgram("stopped"), QByteArray());
        CloseWindow();
    }

    void recordHidesTheWindowAndShowsTheStatus()
    {
        EnterRecordPage();
        QCOMPARE(Button(), QString("Record"));
        Press("Record");
        QVERIFY(DRUI::m_bIsStart);
        QVERIFY(!Window().isVisible());
        QCOMPARE(Button(), QString("Stop"));
        QVERIFY(Child<QSystemTrayIcon>("m_pTrayIcon")->isVisible());
        QCOMPARE(Entry(1)->text(), QString("Stop"));
        QCOMPARE(Child<QTimer>("m_pRecTimer")->interval(), 200);
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:0"));
        QTRY_VERIFY2(!DRUI::m_pStereoMix->text().endsWith("\n0 Bytes"),
                     "the file's size is not shown");
        QVERIFY(!DRUI::m_pStereoMix->isHidden());
        QVERIFY2(DRUI::m_pStereoMix->height() >= DRUI::m_pStereoMix->sizeHint().height(),
                 "the status text is cut off");
    }

    void theSecondPressStopsAndTheToolFinishes()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(Window().isVisible());
        QCOMPARE(Button(), QString("Start")); // no longer "Record"
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

    void aToolThatPrintsNothingIsNotAskedToQuitAndEveryOutputAfterTheStopAsksAgain()
    {
        QFile::remove(BesideProgram("stopped"));
        InstallTool(kSilentTool);
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        Call("btnSlotRecord");
        QVERIFY(Window().isVisible());
        auto* process = Child<QProcess>("m_pRecProcess");
        QCoreApplication::processEvents();
        QTRY_COMPARE(process->bytesToWrite(), 0); // a key written by the stop has arrived by now
        QCOMPARE(process->state(), QProcess::Running);

        WriteFile(BesideProgram("stopped"), QByteArray());
        QTRY_COMPARE(process->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("keys")), QByteArray("q\r\nq\r\nq\r\n"));
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
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
            const QImage shown =
                Child<QSystemTrayIcon>("m_pTrayIcon")->icon().pixmap(22, 22).toImage();
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
        auto* icon = Child<QSystemTrayIcon>("m_pTrayIcon");
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

    // What Qt caches for a shown icon would grow with every new one.
    void theIconBlinksForHoursWithTheSameTwoIcons()
    {
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        QSet<qint64> icons;
        for (int tick = 1; tick <= 320; ++tick) {
            Call("doTimerRec");
            icons << Child<QSystemTrayIcon>("m_pTrayIcon")->icon().cacheKey();
        }
        QCOMPARE(icons.size(), 2);
    }

    void recordPressedAsFastAsAMachineCanLosesNoFile()
    {
        const ModalBoxes boxes;
        EnterRecordPage();
        for (int i = 0; i < 50; ++i) {
            Call("btnSlotRecord");
        }
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        const qsizetype starts = ReadFile(BesideProgram("starts")).size();
        QVERIFY2(starts > 0, "nothing was recorded");
        QCOMPARE(Recordings().size(), starts);
    }

    void theCountersThatNothingReadsAreZero()
    {
        const ModalBoxes boxes;
        DRUI::m_n64AudioFrames = 5;
        EnterRecordPage();
        QCOMPARE(DRUI::m_n64AudioFrames, 0);
        for (const char* slot :
             {"btnSlotRecord", "btnSlotRecord", "btnSlotMenuStop", "btnSlotMenuStop"}) {
            DRUI::m_n64AudioFrames = 5;
            Call(slot);
            QCOMPARE(DRUI::m_n64AudioFrames, 0);
        }
        QCOMPARE(Window().StartRecord(), 0);
    }

private:
    QString Button() { return Child<QPushButton>("m_pRecordBtn")->text(); }

    QAction* Entry(int position)
    {
        return Child<QSystemTrayIcon>("m_pTrayIcon")->contextMenu()->actions().at(position);
    }

    static QImage Picture(const QString& name) { return QIcon(name).pixmap(22, 22).toImage(); }
};

QTEST_MAIN(RecordingTest)
#include "recording_test.moc"
