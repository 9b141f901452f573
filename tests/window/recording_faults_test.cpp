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
