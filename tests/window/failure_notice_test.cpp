#include "jobs/recording_watch.h"
#include "tests/window/failure_box.h"
#include "tests/window/modal_boxes.h"

#include <QProcess>

// A recording that fails is told at once and once, and nothing else changes.
class FailureNoticeTest : public FailureTest
{
    Q_OBJECT

private Q_SLOTS:
    void aToolThatDoesNotStartIsToldAtOnce_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("by the button") << QByteArray("btnSlotRecord");
        QTest::newRow("by the menu") << QByteArray("btnSlotMenuStop");
    }

    void aToolThatDoesNotStartIsToldAtOnce()
    {
        QFETCH(QByteArray, slot);
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Call(slot.constData());
        QCOMPARE(ToldFailure(), QString("The recording could not be started: "
                                        "tool: No such file or directory"));
        QVERIFY2(DRUI::m_bIsStart && !Window().isVisible(), "the states changed");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:01"));
        QVERIFY(DRUI::m_pStereoMix->text().endsWith("\n\n0 Bytes"));
        StopsWithoutAnotherMessage(slot);
    }

    void quitAfterAFailedStartTellsNothingMore()
    {
        EnterRecordPage();
        QFile::remove(BesideProgram("tool"));
        Press("Record");
        FailureBox()->close();
        const ModalBoxes boxes;
        Call("btnSlotMenuQuit");
        QCOMPARE(boxes.texts, QStringList());
        QCOMPARE(ToldFailure(), QString());
        QVERIFY(!Window().isVisible());
    }

    void aStartWhileTheRecordingBeforeIsBeingFinishedIsToldAtOnce()
    {
        InstallToolThatFinishesWhenTold();
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotRecord");
        QTRY_VERIFY2(ReadFile(BesideProgram("keys")).startsWith('q'), "it was not asked to quit");

        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Press("Start");
        const QString told = "The recording could not be started: "
                             "the recording before it was still being finished";
        QCOMPARE(ToldFailure(), told);
        // The end of the recording before is no second failure.
        WriteFile(BesideProgram("may_finish"), QByteArray());
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ToldFailure(), told);
        StopsWithoutAnotherMessage("btnSlotRecord");
        QCOMPARE(Recordings().size(), 1);
    }

    void aToolThatEndsByItselfIsToldAtOnce_data()
    {
        QTest::addColumn<QByteArray>("end");
        QTest::addColumn<QString>("message");
        const QByteArray content = "printf data >\"${!#}\"\n";
        const QString noStart = "The recording could not be started: ";
        const QString noMore = "The recording has ended by itself: ";
        const QString file = "\nWhat was recorded until then:\n%1";
        QTest::newRow("before it has a file")
            << QByteArray("echo 'tool: no screen.' >&2; exit 1\n") << noStart + "no screen";
        QTest::newRow("with an empty file")
            << QByteArray(": >\"${!#}\"; echo 'a.mp4: Permission denied'; exit 1\n")
            << noStart + "a.mp4: Permission denied";
        QTest::newRow("with a reason")
            << content + "echo 'Error: No space left on device'; exit 1\n"
            << noMore + "Error: No space left on device" + file;
        QTest::newRow("without a word")
            << content + "exit 3\n"
            << noMore + "tool ended with code 3 and did not say why" + file;
        QTest::newRow("without a fault") << content + "exit 0\n"
                                         << noMore + "tool did not say why" + file;
        QTest::newRow("with its ffmpeg killed")
            << content + "echo 'Error: early'; echo frame=1 >&2; exit 137\n"
            << noMore + "tool was killed or has crashed" + file;
        QTest::newRow("killed") << content + "echo frame=1 >&2; kill -KILL $$\n"
                                << noMore + "tool was killed or has crashed" + file;
    }

    void aToolThatEndsByItselfIsToldAtOnce()
    {
        QFETCH(QByteArray, end);
        QFETCH(QString, message);
        InstallTool(QByteArray("#!/bin/bash\nhere=$(dirname \"$0\")\n"
                               "if [[ \"$*\" == *-list_devices* ]]; then cat \"$here/listing\"; "
                               "exit 1; fi\n") +
                    end);
        EnterRecordPage();
        Press("Record");
        QTRY_VERIFY2(FailureBox() != nullptr, "nothing is told");
        if (message.contains("%1")) {
            message = message.arg(SaveDirectory() + '/' + Recordings().value(0));
        }
        QCOMPARE(ToldFailure(), message);
        QVERIFY2(DRUI::m_bIsStart && !Window().isVisible(), "the states changed");
        QTRY_VERIFY(DRUI::m_pStereoMix->text().startsWith("Recording... \n\n00:00:01"));
        StopsWithoutAnotherMessage("btnSlotRecord");
    }

    void aQuestionOfTheDesktopIsNoStandstill()
    {
        InstallTool(QByteArray(kRecordingTool).replace("printf 'data' >>", ": printf 'data' >>"));
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        auto* watch = Window().findChild<RecordingWatch*>();
        for (int seconds = 0; seconds < 90; seconds += 9) {
            LookAtTheFile(9);
            watch->AddOutput("Waiting for the desktop to let the screen be recorded\r");
        }
        QVERIFY2(FailureBox() == nullptr, "told while the user is being asked");
        LookAtTheFile(10);
        QVERIFY2(FailureBox() != nullptr, "not told after the user has answered");
        StopsWithoutAnotherMessage("btnSlotRecord");
    }

    void aFileThatDoesNotGrowIsToldOnce()
    {
        InstallTool(QByteArray(kRecordingTool).replace("printf 'data' >>", ": printf 'data' >>"));
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        LookAtTheFile(9);
        QCOMPARE(ToldFailure(), QString());
        LookAtTheFile(1);
        QCOMPARE(ToldFailure(), QString("The recording has come to a halt: "
                                        "nothing has been written for 10 s"));
        FailureBox()->close();
        LookAtTheFile(20);
        QCOMPARE(ToldFailure(), QString());
        StopsWithoutAnotherMessage("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ToldFailure(), QString()); // the empty file is the same failure
    }

    void aFileThatGrowsInBetweenIsNoFailure()
    {
        InstallTool(QByteArray(kRecordingTool).replace("printf 'data' >>", ": printf 'data' >>"));
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const QString file = SaveDirectory() + '/' + Recordings().first();
        LookAtTheFile(9);
        WriteFile(file, "more");
        LookAtTheFile(10);
        QCOMPARE(ToldFailure(), QString());
        LookAtTheFile(1);
        QVERIFY2(ToldFailure().endsWith("\n" + file), qPrintable(ToldFailure()));
    }

    // Resuming asks for a second start, which the running tool refuses.
    void aPauseIsNoFailureAndTheFileStaysWatched()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        Call("btnSlotMenuPause");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Call("btnSlotMenuPause");
        QCOMPARE(ToldFailure(), QString());
        Child<QProcess>("m_pRecProcess")->kill();
        QTRY_VERIFY2(FailureBox() != nullptr, "the end is not told");
        QVERIFY2(ToldFailure().endsWith(Recordings().first()), qPrintable(ToldFailure()));
    }

    // The tool has not heard of the stop, so it records on.
    void aRecordingWhoseStopWasTakenBackStaysWatched()
    {
        InstallTool(QByteArray(kRecordingTool)
                        .replace("key=\n", "printf data >\"${!#}\"; exec sleep 60\n"));
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        QTRY_VERIFY(QFileInfo(SaveDirectory() + '/' + Recordings().first()).size() > 0);
        Call("btnSlotRecord");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("already running"));
        Press("Start");
        QCOMPARE(ToldFailure(), QString());
        Child<QProcess>("m_pRecProcess")->kill();
        QTRY_VERIFY2(ToldFailure().startsWith("The recording has ended by itself: "),
                     "the end is not told");
    }

    void aStopThatLeavesNoFileIsTold_data()
    {
        QTest::addColumn<bool>("missing");
        QTest::newRow("missing") << true;
        QTest::newRow("empty") << false;
    }

    void aStopThatLeavesNoFileIsTold()
    {
        QFETCH(bool, missing);
        InstallToolThatFinishesWhenTold();
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
        const QString file = SaveDirectory() + '/' + Recordings().first();
        Call("btnSlotRecord");
        QTRY_VERIFY2(ReadFile(BesideProgram("keys")).startsWith('q'), "it was not asked to quit");
        QCOMPARE(ToldFailure(), QString()); // not before the tool has ended
        if (missing) {
            QVERIFY(QFile::remove(file));
        } else {
            QVERIFY(QFile::resize(file, 0));
        }
        WriteFile(BesideProgram("may_finish"), QByteArray());
        QTRY_COMPARE(ToldFailure(), "The recording's file is missing or empty: " + file);
    }

private:
    static void InstallToolThatFinishesWhenTold()
    {
        QFile::remove(BesideProgram("may_finish"));
        const QByteArray tool(kRecordingTool);
        const qsizetype end = tool.lastIndexOf("printf 'finished'");
        InstallTool(tool.first(end) + "until [[ -e \"$here/may_finish\" ]]; do sleep 0.01; done\n" +
                    tool.mid(end));
    }

    void LookAtTheFile(int times)
    {
        auto* watch = Window().findChild<RecordingWatch*>();
        for (int i = 0; i < times; ++i) {
            QVERIFY(QMetaObject::invokeMethod(watch, "CheckGrowth"));
        }
    }

    // The message stays as it is, and there is no other.
    void StopsWithoutAnotherMessage(const QByteArray& slot)
    {
        const QString told = ToldFailure();
        const ModalBoxes boxes;
        Call(slot.constData());
        QCOMPARE(boxes.texts, QStringList());
        QCOMPARE(ToldFailure(), told);
        QVERIFY(!DRUI::m_bIsStart && Window().isVisible());
    }
};

QTEST_MAIN(FailureNoticeTest)
#include "failure_notice_test.moc"
