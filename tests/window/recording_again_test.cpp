#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QAction>
#include <QMenu>
#include <QMessageBox>
#include <QProcess>
#include <QTimer>

namespace {

// Prints a line for each file "print" that appears beside it, then waits for input and records it
// in "keys". Exits at the end of its input or after "q".
constexpr auto kToolThatPrintsWhenTold = R"(#!/bin/bash
here=$(dirname "$0")
if [[ "$*" == *-list_devices* ]]; then cat "$here/listing" >&2; exit 1; fi
printf 'x' >>"$here/starts"
: >"${!#}"
until [[ $key == q ]]; do
    if [[ -e "$here/print" ]]; then rm "$here/print"; printf 'frame=    1\r' >&2; fi
    read -r -t 0.02 -N 1 key # may have read a key although it timed out
    [[ -n $key ]] && printf '%s' "$key" >>"$here/keys"
done
printf 'finished' >"$here/finished"
)";

} // namespace

// What one recording leaves behind for the next, and what the rest of the window does meanwhile.
class RecordingAgainTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_first = QString("start %1, pause %2, result %3, frames %4, device %5")
                      .arg(DRUI::m_bIsStart)
                      .arg(DRUI::m_bIsPause)
                      .arg(DRUI::m_nRecorderRet)
                      .arg(DRUI::m_n64AudioFrames)
                      .arg(DRUI::m_nSelectedDeviceID);
    }
    void init()
    {
        Prepare();
        QFile::remove(BesideProgram("print"));
    }
    void cleanup() { CloseWindow(); }

    void theCommandLinesAreLogged()
    {
        const QString tool = '"' + BesideProgram("tool") + '"';
        QTest::ignoreMessage(
            QtDebugMsg,
            qPrintable(QDebug::toString(tool + " -f avfoundation -list_devices true -i \" \"")));
        EnterRecordPage();
        QTest::ignoreMessage(
            QtDebugMsg,
            QRegularExpression("^\"" + QRegularExpression::escape("\\\"" + BesideProgram("tool")) +
                               ".* -f avfoundation -framerate 30 -i .*1:0.* -i .*1:2.* -ar 44100 "
                               ".*-pix_fmt yuv420p .*\\.mp4..? \"$"));
        Press("Record");
        InstallTool("#!/bin/sh\n");
        QTest::ignoreMessage(QtDebugMsg, qPrintable(QDebug::toString(tool + " -i \"/v/a.mp4\"")));
        std::wstring path = L"/v/a.mp4";
        Window().GetVedioTimeSeconds(path.data());
    }

    void aProgramBeginsWithNoRecordingAndNoChoice()
    {
        QCOMPARE(m_first, QString("start 0, pause 0, result 0, frames 0, device 4294967295"));
    }

    void theStatusIsHiddenUntilTheFirstRecording()
    {
        EnterRecordPage();
        QVERIFY(DRUI::m_pStereoMix->isHidden());
        QCOMPARE(DRUI::m_pStereoMix->text(), QString());
    }

    void aStartFromTheTrayShowsTheStatus()
    {
        EnterRecordPage();
        Entry(1)->trigger();
        QVERIFY2(!DRUI::m_pStereoMix->isHidden(), "the recording's status does not show");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:0"));
        QCOMPARE(Child<QTimer>("m_pRecTimer")->interval(), 200);
        Entry(1)->trigger();
        QVERIFY2(DRUI::m_pStereoMix->isHidden(), "the status outlives the recording");
        QVERIFY(!Child<QTimer>("m_pRecTimer")->isActive());
        QVERIFY(Window().isVisible());
        QCOMPARE(Child<QPushButton>("m_pRecordBtn")->text(), QString("Start"));
    }

    void everyRecordingHasItsOwnTimeAndFile()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().contains("00:00:01"));
        const QString first = ToolArguments().last();
        Call("btnSlotRecord");
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        const qint64 size = QFileInfo(first).size();
        Press("Start");
        Call("doTimerRec");
        QVERIFY2(DRUI::m_pStereoMix->text().contains("00:00:00"),
                 qPrintable(DRUI::m_pStereoMix->text()));
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("xx"));
        QVERIFY(ToolArguments().last() != first);
        QCOMPARE(QFileInfo(first).size(), size);
    }

    // A stop from the tray shows no message. The next stop from the button does.
    void theResultThatATrayStopLeavesIsToldByTheNextButtonStop()
    {
        EnterRecordPage();
        Press("Record");
        DRUI::m_nRecorderRet = -101;
        Call("btnSlotMenuStop");
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        Press("Start");
        QTRY_COMPARE(RecProcess()->state(), QProcess::Running);
        {
            const ModalBoxes boxes;
            Call("btnSlotRecord");
            QCOMPARE(boxes.texts, QStringList{"Not enough space, recording stopped."});
            QCOMPARE(boxes.titles, QStringList{"Recorder"});
        }
        QCOMPARE(DRUI::m_nRecorderRet, 0);
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

    // The window is shown before the message.
    void theMessageOfAStopIsAStandardInformationOverTheShownWindow()
    {
        EnterRecordPage();
        Press("Record");
        DRUI::m_nRecorderRet = 1;
        QString seen;
        QTimer user;
        connect(&user, &QTimer::timeout, this, [&] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (box == nullptr) {
                return;
            }
            seen = QString("icon %1, buttons %2, over the window %3, which is shown %4, running %5")
                       .arg(box->icon())
                       .arg(static_cast<int>(box->standardButtons()))
                       .arg(box->parentWidget() == &Window())
                       .arg(Window().isVisible())
                       .arg(DRUI::m_bIsStart);
            box->accept();
        });
        user.start(5);
        Call("btnSlotRecord");
        QCOMPARE(seen,
                 QString("icon %1, buttons %2, over the window 1, which is shown 1, running 0")
                     .arg(QMessageBox::Information)
                     .arg(static_cast<int>(QMessageBox::Ok)));
    }

    // The tool learns of the stop only with its next output. A start before that makes it a
    // recording again, the same one, and no failure is shown.
    void aStartBeforeTheToolPrintsAgainLetsTheOldRunGoOn()
    {
        InstallTool(kToolThatPrintsWhenTold);
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const qint64 tool = RecProcess()->processId();
        Call("btnSlotRecord");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Press("Start");
        QVERIFY(DRUI::m_bIsStart);

        QSignalSpy output(RecProcess(), SIGNAL(readyRead()));
        WriteFile(BesideProgram("print"), {});
        QTRY_COMPARE(output.count(), 1);
        QTRY_COMPARE(RecProcess()->bytesToWrite(), 0);
        WriteFile(BesideProgram("print"), {});
        QTRY_COMPARE(output.count(), 2);
        QVERIFY2(!QFile::exists(BesideProgram("keys")), "the running recording was asked to quit");
        QCOMPARE(RecProcess()->processId(), tool);

        {
            const ModalBoxes boxes;
            Call("btnSlotRecord");
            QCOMPARE(boxes.texts, QStringList());
        }
        WriteFile(BesideProgram("print"), {});
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        QCOMPARE(Recordings().size(), 1);
    }

    // The first recording was asked to quit, the second was not: its refused start is not a
    // failure.
    void aPauseInASecondRecordingTellsNoFailure()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        Press("Start");
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("xx"));
        Call("btnSlotMenuPause");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Call("btnSlotMenuPause");
        const ModalBoxes boxes;
        Call("btnSlotRecord");
        QCOMPARE(boxes.texts, QStringList());
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
    }

    // The new icon stays hidden and follows the recording from now on. The old one does not change.
    void enteringThePageAgainWhileRecordingLeavesTheRecordingAlone()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Window().show();
        Press("Back");
        Call("btnSlot");
        QVERIFY(DRUI::m_bIsStart);
        QCOMPARE(Page(), 1);
        QCOMPARE(Child<QPushButton>("m_pRecordBtn")->text(), QString("Stop"));
        QVERIFY(Child<QTimer>("m_pRecTimer")->isActive());
        const auto icons = Window().findChildren<QSystemTrayIcon*>("m_pTrayIcon");
        QCOMPARE(icons.size(), 2);
        QVERIFY(icons.at(0)->isVisible());
        QVERIFY(!icons.at(1)->isVisible());

        Press("Stop");
        QVERIFY(!DRUI::m_bIsStart);
        QCOMPARE(icons.at(0)->contextMenu()->actions().at(1)->text(), QString("Stop"));
        QCOMPARE(icons.at(1)->contextMenu()->actions().at(1)->text(), QString("Start"));
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        QCOMPARE(Recordings().size(), 1);
    }

    void theMenuOfAnOldIconStillStops()
    {
        EnterRecordPage();
        Call("btnSlot");
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const auto icons = Window().findChildren<QSystemTrayIcon*>("m_pTrayIcon");
        icons.first()->contextMenu()->actions().at(1)->trigger();
        QVERIFY(!DRUI::m_bIsStart);
        QTRY_COMPARE(RecProcess()->state(), QProcess::NotRunning);
    }

    // A tool that prints nothing is asked only by the window's destructor, and once.
    void closingAsksASilentToolToFinishItsFile()
    {
        InstallTool(kToolThatPrintsWhenTold);
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Window().close();
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
        QVERIFY(ReadFile(BesideProgram("keys")).startsWith('q'));
    }

    void closingAfterAStopAsksASilentToolToo()
    {
        InstallTool(kToolThatPrintsWhenTold);
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        CloseWindow();
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }

private:
    QProcess* RecProcess() { return Child<QProcess>("m_pRecProcess"); }

    QAction* Entry(int position)
    {
        return Child<QSystemTrayIcon>("m_pTrayIcon")->contextMenu()->actions().at(position);
    }

    QString m_first; // the recording's state at program start
};

QTEST_MAIN(RecordingAgainTest)
#include "recording_again_test.moc"
