// A save directory that does not answer, such as one on a dead network share.
#include "jobs/recording_watch.h"
#include "jobs/work_thread.h"
#include "tests/window/dead_path.h"
#include "tests/window/failure_box.h"
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>
#include <QSettings>
#include <QTimer>

class DeadSaveDirectoryTest : public WindowTest
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
    }
    void init()
    {
        Prepare();
        QVERIFY(QDir().mkpath(SaveDirectory()));
    }
    void cleanup()
    {
        DeadPath::Set(QString());
        QTRY_COMPARE(DeadPath::Waiting(), 0);
        CloseWindow();
    }

    void theWindowOpensAndShowsTheSpaceWhenTheDirectoryAnswers()
    {
        DeadPath::Set(SaveDirectory());
        QElapsedTimer time;
        time.start();
        EnterRecordPage();
        QVERIFY2(time.elapsed() < kAtOnceMs, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(Space(), QString("Unknow"));
        DeadPath::Set(QString());
        QTRY_VERIFY2(IsNumber(Space()), "the answer came and was not shown");
    }

    void aChosenDirectoryThatDoesNotAnswerDoesNotShowTheSpaceOfTheOneBefore()
    {
        const QTemporaryDir chosen;
        EnterRecordPage();
        QVERIFY(IsNumber(Space()));
        ModalBoxes boxes;
        boxes.directory = chosen.path();
        connect(Child<QLineEdit>("m_pSaveDirEdit"), &QLineEdit::textChanged, this,
                [&] { DeadPath::Set(chosen.path()); }); // the chooser could read it
        QElapsedTimer time;
        connect(Child<QLineEdit>("m_pSaveDirEdit"), &QLineEdit::textChanged, this,
                [&] { time.start(); });
        Call("btnSlotLayout2Dir");
        QVERIFY2(time.elapsed() < kAtOnceMs, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(Space(), QString("Unknow"));
        DeadPath::Set(QString());
        QTRY_VERIFY(IsNumber(Space()));
    }

    // Qt's chooser begins where the user was last, and looks at everything there. The directory
    // above shows the dead one, which would freeze it too.
    void theChooserBeginsInTheNearestDirectoryThatCanBeListed_data()
    {
        QTest::addColumn<QByteArray>("slot");
        QTest::newRow("record page") << QByteArray("btnSlotLayout2Dir");
        QTest::newRow("cut, which remembers its last") << QByteArray("btnSlotLayout3Cut");
    }
    void theChooserBeginsInTheNearestDirectoryThatCanBeListed()
    {
        QFETCH(QByteArray, slot);
        const QTemporaryDir outer;
        QVERIFY(QDir(outer.path()).mkpath("mounted/dead"));
        const QString dead = outer.filePath("mounted/dead");
        QSettings settings(QSettings::UserScope, "QtProject");
        InstallTool("#!/bin/sh\n"); // ends at once
        OpenWindow();
        ModalBoxes boxes;
        boxes.directory = dead;
        Call(slot.constData());
        {
            const QFileDialog elsewhere(nullptr, QString(), dead);
        } // the user was there last
        settings.setValue("FileDialog/history", QStringList(QUrl::fromLocalFile(dead).toString()));
        settings.setValue("FileDialog/sidebarWidth", 123);

        DeadPath::Set(dead);
        boxes.directory = QString();
        QElapsedTimer time;
        time.start();
        Call(slot.constData());
        const qint64 elapsed = time.elapsed();
        DeadPath::Set(QString()); // it will be removed
        QVERIFY2(elapsed < 8000, qPrintable(QString::number(elapsed)));
        QCOMPARE(boxes.choosers, 2);
        QCOMPARE(boxes.startDirectory, outer.path());
        QCOMPARE(settings.value("FileDialog/sidebarWidth").toInt(), 123); // the user's
    }

    // The first tick waits a moment, all others do not.
    void aRecordingGoesOnWithTheSizeThatWasSeenLast()
    {
        StartRecording();
        QTRY_VERIFY2(!Size().startsWith("0 "), "no size is shown");
        DeadPath::Set(SaveDirectory());
        Call("doTimerRec");
        QElapsedTimer time;
        time.start();
        const QString before = Size();
        const QString status = DRUI::m_pStereoMix->text();
        for (int tick = 0; tick < 20; ++tick) {
            Call("doTimerRec");
        }
        QVERIFY2(time.elapsed() < kAtOnceMs, qPrintable(QString::number(time.elapsed())));
        QTRY_VERIFY2(DRUI::m_pStereoMix->text() != status, "the time stands still");
        QCOMPARE(Size(), before);
        QVERIFY2(DRUI::m_bIsStart, "it was stopped, as if the disk were full");
        QVERIFY2(DeadPath::Waiting() <= 3, qPrintable(QString::number(DeadPath::Waiting())));

        DeadPath::Set(QString());
        QTRY_VERIFY2(Size() != before, "the size does not grow again");
        Stop();
        QVERIFY2(Recordings().size() == 1, "the recording is lost");
    }

    void aRecordingInADeadDirectoryCanBeStopped()
    {
        StartRecording();
        DeadPath::Set(SaveDirectory());
        Call("doTimerRec");
        QElapsedTimer time;
        time.start();
        Stop();
        QVERIFY2(time.elapsed() < kAtOnceMs, qPrintable(QString::number(time.elapsed())));
    }

    void theUserIsToldThatNothingIsWritten()
    {
        StartRecording();
        auto* watch = Window().findChild<RecordingWatch*>();
        DeadPath::Set(SaveDirectory());
        for (int second = 0; second < 12; ++second) {
            QVERIFY(QMetaObject::invokeMethod(watch, "CheckGrowth"));
        }
        QVERIFY2(ToldFailure().contains("nothing has been written for 10 s"),
                 qPrintable(ToldFailure()));
        Stop();
    }

    void aStartIsRefusedAndTold()
    {
        EnterRecordPage();
        DeadPath::Set(SaveDirectory());
        QElapsedTimer time;
        time.start();
        Press("Record");
        QVERIFY2(time.elapsed() < 8000, qPrintable(QString::number(time.elapsed())));
        QCOMPARE(ToldFailure(), QString("The recording could not be started: "
                                        "the save directory does not answer"));
        QVERIFY2(DRUI::m_bIsStart && !Window().isVisible(), "the states changed");
        QVERIFY2(ReadFile(BesideProgram("starts")).isEmpty(), "the tool was started");
        Call("btnSlotRecord");

        DeadPath::Set(QString());
        Press("Start");
        QTRY_COMPARE(Recordings().size(), 1);
        Stop();
    }

    void theProgramDoesNotWaitForItsThreads()
    {
        StartRecording();
        DeadPath::Set(SaveDirectory());
        Call("doTimerRec");
        Call("btnSlotRecord");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QElapsedTimer time;
        time.start();
        CloseWindow();
        QVERIFY2(time.elapsed() < kAtOnceMs, qPrintable(QString::number(time.elapsed())));
        QVERIFY2(IsThreadLeftBehind(), "the program would wait for them at its end");
        DeadPath::Set(QString()); // they come back to a window that is gone
        QTRY_COMPARE(DeadPath::Waiting(), 0);
        OpenWindow();
    }

private:
    const QTemporaryDir m_settings;
    static constexpr int kAtOnceMs = 3000; // two waits of half a second, on a busy machine

    QString Space() { return Child<QLabel>("m_pFreeSpaceLabel")->text(); }
    static bool IsNumber(const QString& space)
    {
        return space.contains(QRegularExpression("^[0-9.]+ "));
    }
    static QString Size() { return DRUI::m_pStereoMix->text().section("\n\n", -1); }

    void StartRecording()
    {
        EnterRecordPage();
        Press("Record");
        QTRY_COMPARE(Recordings().size(), 1);
    }

    void Stop()
    {
        Call("btnSlotRecord");
        QVERIFY2(Window().isVisible(), "the window does not come back");
        QTRY_COMPARE(Child<QProcess>("m_pRecProcess")->state(), QProcess::NotRunning);
        QCOMPARE(ReadFile(BesideProgram("finished")), QByteArray("finished"));
    }
};

QTEST_MAIN(DeadSaveDirectoryTest)
#include "dead_save_directory_test.moc"
