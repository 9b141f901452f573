// Recordings that fail with the real `tool`: told at once by a box above other windows, which
// blocks nothing.
#include "tests/support/desktop_test.h"
#include "tests/support/full_screen_window.h"
#include "tests/support/recording_file.h"

#include <QTest>

#include <csignal>
#include <unistd.h>

class ToldDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void ffmpegThatIsMissingIsTold();
    void readOnlySaveDirectoryIsTold();
    void homeThatCannotBeWrittenIsTold();
    void killedFfmpegIsToldWithTheFile();
    void recordingThatComesToAHaltIsToldAndGoesOn();
    void boxStaysAboveTheWindowAndBlocksNothing();
    void boxTakesNoKeysFromOtherPrograms();
    void boxIsAboveAFullScreenProgramThatKeepsItsKeys_data();
    void boxIsAboveAFullScreenProgramThatKeepsItsKeys();
    void boxGoesWithTheProgram();

private:
    static constexpr auto kBox = "Tarvessa Data Tool";

    static bool Fails(Recorder& recorder);
    static void StopsWithoutAnotherBox(Recorder& recorder);
    int Boxes() const;
    qsizetype Height(const QString& title) const;
};

// Starts a recording and waits until its failure is told.
bool ToldDesktopTest::Fails(Recorder& recorder)
{
    if (!recorder.StartOnRecordPage()) {
        return false;
    }
    recorder.ChooseAudio(3); // none
    recorder.Click("record.record");
    return recorder.WaitHidden() && WaitUntil([&] { return recorder.Message().has_value(); });
}

void ToldDesktopTest::StopsWithoutAnotherBox(Recorder& recorder)
{
    QVERIFY2(!recorder.IsShown(), "the failure ended the recording's state");
    QVERIFY2(recorder.CloseMessage(), "the box cannot be closed");
    QVERIFY2(recorder.IsRunning(), "the program ended with the box");
    QVERIFY2(recorder.ChooseInTray(1), "the tray's menu does not open");
    QVERIFY2(recorder.WaitShown(), "the window does not come back");
    QVERIFY2(recorder.WaitForTool(), "the tool does not end");
    QVERIFY2(!recorder.Message(), "the failure is told again after the stop");
}

int ToldDesktopTest::Boxes() const
{
    int boxes = 0;
    for (const DesktopWindow& window : m_desktop.Windows()) {
        boxes += window.visible && window.title == kBox ? 1 : 0;
    }
    return boxes;
}

// The place of a visible window among all from the lowest up, or -1.
qsizetype ToldDesktopTest::Height(const QString& title) const
{
    const QList<DesktopWindow> windows = m_desktop.Windows();
    for (qsizetype i = 0; i < windows.size(); ++i) {
        if (windows[i].visible && windows[i].title == title) {
            return i;
        }
    }
    return -1;
}

void ToldDesktopTest::ffmpegThatIsMissingIsTold()
{
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("LUMENFOLD_FFMPEG", "/nothing");
    QVERIFY2(Fails(recorder), "nothing is told");
    QVERIFY2(recorder.Log().contains("The recording could not be started: LUMENFOLD_FFMPEG names "
                                     "/nothing, which is not an executable file"),
             qPrintable(recorder.Log()));
    QVERIFY2(WaitUntil([&] { return recorder.HasNotification(); }),
             "the tray icon shows no notification");
    StopsWithoutAnotherBox(recorder);
}

// Root may write everywhere, so its `tool` becomes another user.
void ToldDesktopTest::readOnlySaveDirectoryIsTold()
{
    Recorder recorder(m_desktop);
    const QString directory = recorder.Beside("read-only");
    QVERIFY(QDir().mkdir(directory));
    QVERIFY(QFile::setPermissions(directory, QFile::ReadOwner | QFile::ExeOwner));
    if (geteuid() == 0) {
        const QString top = QFileInfo(recorder.Beside("..")).canonicalFilePath();
        for (const QString& folder : {top, directory}) {
            QVERIFY(QFile::setPermissions(folder, QFile::permissions(folder) | QFile::ReadOther |
                                                      QFile::ExeOther));
        }
        recorder.ReplaceTool("[[ $* == *-list_devices* ]] && exec \"$REAL\" \"$@\"\n"
                             "exec setpriv --reuid 65534 --clear-groups \"$REAL\" \"$@\"\n");
    }
    recorder.SetSaveDirectory(directory);
    QVERIFY2(Fails(recorder), "nothing is told");
    QVERIFY2(recorder.Log().contains("The recording could not be started: " + directory) &&
                 recorder.Log().contains(".mp4: Permission denied"),
             qPrintable(recorder.Log()));
    StopsWithoutAnotherBox(recorder);
}

void ToldDesktopTest::homeThatCannotBeWrittenIsTold()
{
    Recorder recorder(m_desktop);
    const QString home = recorder.Beside("home");
    QFile file(home);
    QVERIFY(file.open(QIODevice::WriteOnly)); // for root as well, nothing can be created in it
    recorder.SetEnvironment("HOME", home);
    QVERIFY2(Fails(recorder), "nothing is told");
    QVERIFY2(recorder.Log().contains("The recording could not be started: " + home) &&
                 recorder.Log().contains(".mp4: Not a directory"),
             qPrintable(recorder.Log()));
    StopsWithoutAnotherBox(recorder);
}

void ToldDesktopTest::killedFfmpegIsToldWithTheFile()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(3000));
    QVERIFY(recorder.Ffmpeg() > 0);
    QCOMPARE(kill(recorder.Ffmpeg(), SIGKILL), 0);
    QElapsedTimer time;
    time.start();
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    qInfo("told %lld ms after the kill", time.elapsed());
    QVERIFY2(recorder.Log().contains("The recording has ended by itself: ") &&
                 recorder.Log().contains("What was recorded until then:\\n" + recorder.Recording()),
             qPrintable(recorder.Log()));
    StopsWithoutAnotherBox(recorder);
    const RecordingFile recorded = ReadRecording(recorder.Recording());
    QVERIFY2(recorded.fault.isEmpty(), qPrintable(recorded.fault));
}

void ToldDesktopTest::recordingThatComesToAHaltIsToldAndGoesOn()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(1500));
    const pid_t ffmpeg = recorder.Ffmpeg();
    QVERIFY(ffmpeg > 0);
    QCOMPARE(kill(ffmpeg, SIGSTOP), 0);
    QElapsedTimer time;
    time.start();
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }, 30000), "nothing is told");
    QVERIFY2(time.hasExpired(9000), qPrintable(QString("told after %1 ms").arg(time.elapsed())));
    QVERIFY2(recorder.Log().contains("nothing has been written for 10 s"),
             qPrintable(recorder.Log()));
    const qint64 size = QFileInfo(recorder.Recording()).size();
    QCOMPARE(kill(ffmpeg, SIGCONT), 0);
    QVERIFY2(WaitUntil([&] { return QFileInfo(recorder.Recording()).size() > size; }),
             "the recording does not go on");
    StopsWithoutAnotherBox(recorder);
    const RecordingFile recorded = ReadRecording(recorder.Recording());
    QVERIFY2(recorded.fault.isEmpty(), qPrintable(recorded.fault));
}

// The window is brought back with a click on the tray icon, and stops with its button.
void ToldDesktopTest::boxStaysAboveTheWindowAndBlocksNothing()
{
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("LUMENFOLD_FFMPEG", "/nothing");
    QVERIFY2(Fails(recorder), "nothing is told");
    QVERIFY(recorder.WaitTrayIcon());
    m_desktop.Click(recorder.TrayIcon());
    QVERIFY2(recorder.WaitShown(), "the box blocks the tray icon");
    QVERIFY2(WaitUntil([&] { return Height(kBox) > Height(Recorder::kTitle); }),
             "the window covers the box");
    recorder.Click("record.record"); // stops
    QCOMPARE(Boxes(), 1);
    recorder.Click("record.record"); // the same failure again
    QVERIFY2(recorder.WaitHidden(), "the box blocks the window");
    QVERIFY(WaitUntil([&] { return recorder.Message().has_value(); }));
    QCOMPARE(Boxes(), 1);
    StopsWithoutAnotherBox(recorder);
}

void ToldDesktopTest::boxTakesNoKeysFromOtherPrograms()
{
    Recorder recorder(m_desktop);
    recorder.SetEnvironment("LUMENFOLD_FFMPEG", "/nothing");
    QVERIFY2(Fails(recorder), "nothing is told");
    m_desktop.Press({"Return", "space", "Escape"});
    m_desktop.Press({"Return"}); // by now the keys before have arrived
    QVERIFY2(recorder.Message(), "a key that was meant for another program answered the box");
    StopsWithoutAnotherBox(recorder);
}

void ToldDesktopTest::boxIsAboveAFullScreenProgramThatKeepsItsKeys_data()
{
    QTest::addColumn<bool>("asks");
    QTest::newRow("as the window manager knows it") << true;
    QTest::newRow("by its size") << false;
}

void ToldDesktopTest::boxIsAboveAFullScreenProgramThatKeepsItsKeys()
{
    QFETCH(bool, asks);
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    FullScreenWindow other(asks);
    QVERIFY2(WaitUntil([&] { return Height("full screen") >= 0; }), "it is not shown");
    m_desktop.Activate(other.Id());
    QVERIFY2(WaitUntil([&] { return other.HasKeyboard(); }), "it has no keyboard");
    QCOMPARE(kill(recorder.Ffmpeg(), SIGKILL), 0);
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    QVERIFY2(WaitUntil([&] { return Height(kBox) > Height("full screen"); }),
             "the full-screen window covers the box");
    const QString shots = qEnvironmentVariable("LUMENFOLD_SCREENSHOTS");
    if (!shots.isEmpty()) {
        m_desktop.Screenshot(shots + "/failure-above-full-screen.png");
    }
    m_desktop.Press({"Return", "space", "Escape", "a"});
    QVERIFY2(WaitUntil([&] { return other.Keys() == 4; }), "keys do not reach the program");
    QVERIFY2(recorder.Message(), "a key that was meant for another program answered the box");
    QVERIFY2(recorder.CloseMessage(), "a click does not close the box");
}

// Not only when the program has waited for a tool that does not end.
void ToldDesktopTest::boxGoesWithTheProgram()
{
    Recorder recorder(m_desktop);
    recorder.ReplaceTool("[[ $* == *-list_devices* ]] && exec \"$REAL\" \"$@\"\n"
                         "while sleep 0.1; do printf 'frame=1\\r'; done\n");
    recorder.UseShortToolWait();
    QVERIFY(recorder.StartOnRecordPage());
    recorder.Click("record.record");
    QVERIFY(recorder.WaitHidden());
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    recorder.Click("record.record"); // while the tool is to finish the file of the first one
    QVERIFY(recorder.WaitHidden());
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    QVERIFY(recorder.ChooseInTray(2));
    QVERIFY2(WaitUntil([&] { return !recorder.Message(); }), "the box stays");
    QVERIFY2(recorder.IsRunning(), "the program did not wait for the tool");
    QCOMPARE(recorder.WaitForEnd(), 0);
}

QTEST_GUILESS_MAIN(ToldDesktopTest)
#include "told_desktop_test.moc"
