#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QProcess>
#include <QTimer>

// Recordings that do not start, or do not stop as requested.
class RecordingFaultsTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { Prepare(); }

    void cleanup()
    {
        WriteFile(BesideProgram("may_finish"), QByteArray());
        CloseWindow();
        QDir::setCurrent(m_workingDirectory);
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
        Call("btnSlotMenuStop"); // a message box would block here
        QVERIFY(Window().isVisible());
        QCOMPARE(DRUI::m_nRecorderRet, -101);
    }

    void aRelativeDirectoryHasNoSpaceAndStopsTheRecording()
    {
        QDir::setCurrent(QFileInfo(SaveDirectory()).path()); // where the directory is created
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=relative\n");
        EnterRecordPage();
        Press("Record");
        QCOMPARE(MessageAfter("doTimerRec"),
                 QString("Recorder: Not enough space, recording stopped."));
        QVERIFY(!DRUI::m_bIsStart);
        QVERIFY(Window().isVisible());
    }

    // The recording's path starts at the root directory, so this tool does not write a file.
    void anEmptySaveDirectoryHarmsNothing()
    {
        InstallTool(QByteArray(kRecordingTool).replace("\"${!#}\"", "/dev/null"));
        WriteFile(BesideProgram("ScreenRecord.ini"), "[screen_record]\nsave_path=\n");
        EnterRecordPage();
        Press("Record");
        Child<QTimer>("m_pRecTimer")->stop();
        QTRY_COMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
        const QString path = ToolArguments().last();
        QVERIFY2(path.contains(QRegularExpression("^/[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(-[0-9]{2}){2}"
                                                  "\\.mp4$")),
                 qPrintable(path));
        QVERIFY2(!QFile::exists(path), "the test wrote into the root of the file system");
        Call("btnSlotMenuStop");
        QVERIFY(Window().isVisible());
        QTRY_COMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
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

    void aStartWhileTheRecordingBeforeIsBeingFinishedIsToldAfterTheStop()
    {
        QFile::remove(BesideProgram("may_finish"));
        QFile::remove(BesideProgram("print"));
        const QByteArray tool(kRecordingTool);
        const qsizetype end = tool.lastIndexOf("printf 'finished'");
        InstallTool(tool.first(end) +
                    "until [[ -e \"$here/may_finish\" ]]; do sleep 0.01\n"
                    "if [[ -e \"$here/print\" ]]; then rm \"$here/print\"; "
                    "echo frame=; fi; done\n" +
                    tool.mid(end));
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QTRY_VERIFY2(ReadFile(BesideProgram("keys")).startsWith('q'), "it was not asked to quit");

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Press("Start");
        QVERIFY(DRUI::m_bIsStart);
        // It has been asked; what it prints now asks no more.
        auto* process = Child<QProcess>("m_pRecProcess");
        QTRY_COMPARE(process->bytesToWrite(), 0);
        qint64 asked = -1;
        const auto read =
            connect(process, &QProcess::readyRead, this, [&] { asked = process->bytesToWrite(); });
        WriteFile(BesideProgram("print"), {});
        QTRY_VERIFY2(asked >= 0, "the tool printed nothing");
        disconnect(read);
        QCOMPARE(asked, 0);
        QCOMPARE(MessageAfter("btnSlotRecord"),
                 QString("Tarvessa Data Tool: The recording could not be started: "
                         "the recording before it was still being finished"));
        QVERIFY(Window().isVisible());
        QCOMPARE(Recordings().size(), 1);
        QCOMPARE(ReadFile(BesideProgram("starts")), QByteArray("x"));
    }

private:
    // "title: text" of the message shown while the slot runs, or empty.
    QString MessageAfter(const char* slot)
    {
        const ModalBoxes boxes;
        [&] { Call(slot); }();
        return boxes.titles.join(' ') + ": " + boxes.texts.join(' ');
    }

    const QString m_workingDirectory = QDir::currentPath();
};

QTEST_MAIN(RecordingFaultsTest)
#include "recording_faults_test.moc"
