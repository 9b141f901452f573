// Ways to start, stop and quit, with the real `tool` and ffmpeg.
#include "tests/support/desktop_test.h"
#include "tests/support/ordinary_movie.h"
#include "tests/support/recording_file.h"

#include <QTest>

#include <csignal>
#include <unistd.h>

class SessionDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void escapeChangesNothingOnAnyPage();
    void theWindowCarriesTheProgramsIcon();
    void closingTheWindowEndsTheProgramWithoutATrace();
    void trayClickBringsTheWindowBackAndItsButtonStops();
    void trayDoubleClickBringsTheWindowBack();
    void trayStartsTheNextRecording();
    void quitFromTrayWhileRecordingFinishesTheFile();
    void quitFromTrayWhileIdleLeavesAFinishedFile();
    void closingTheWindowWhileRecordingFinishesTheFile();
    void signalToTheRecorderFinishesTheFile_data();
    void signalToTheRecorderFinishesTheFile();
    void recordPressedManyTimesAtOnceHarmsNothing();
    void saveDirectoryMayHaveAnyName_data();
    void saveDirectoryMayHaveAnyName();
    void withoutArgumentASecondCopyShowsTheWindow();

private:
    static void ExpectPlayable(const Recorder& recorder, int files = 1);
};

void SessionDesktopTest::ExpectPlayable(const Recorder& recorder, int files)
{
    QCOMPARE(recorder.Recordings().size(), files);
    for (const QString& path : recorder.Recordings()) {
        const RecordingFile file = ReadRecording(path);
        QVERIFY2(file.fault.isEmpty(), qPrintable(path + ": " + file.fault));
    }
}

void SessionDesktopTest::escapeChangesNothingOnAnyPage()
{
    for (const QString page : {"record", "merge", "cut"}) {
        Recorder recorder(m_desktop);
        QVERIFY(recorder.Start());
        m_desktop.Press({"Escape"});
        recorder.Click("home." + page);
        m_desktop.Press({"Escape"});
        // Which control works tells which page is shown.
        recorder.Click(page + ".back");
        recorder.Click("home.record");
        recorder.ChooseAudio(0);
        QVERIFY2(recorder.IsShown(), qPrintable("the window is gone after " + page));
        QVERIFY(recorder.IsRunning());
    }
}

void SessionDesktopTest::theWindowCarriesTheProgramsIcon()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.Start());
    const auto window = m_desktop.Shown("Lumenfold Screen Recorder");
    QVERIFY(window.has_value());
    for (const QByteArray size : {"16 x 16", "32 x 32", "48 x 48"}) {
        // It appears shortly after the window.
        const auto hasSize = [&] {
            const Outcome icon =
                RunProgram("xprop", {"-id", QString::number(window->id), "_NET_WM_ICON"});
            return icon.output.contains("Icon (" + size + ')');
        };
        QVERIFY2(WaitUntil(hasSize), size + " is missing");
    }
}

void SessionDesktopTest::closingTheWindowEndsTheProgramWithoutATrace()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.Start());
    QVERIFY2(QFile::exists(recorder.ErrorFile()), "no Out.txt while it runs");
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY2(!QFile::exists(recorder.ErrorFile()), "Out.txt is left behind");
    QVERIFY2(!QFile::exists(recorder.Beside("ScreenRecord.ini")), "a settings file was made");
    QVERIFY2(!QFile::exists(recorder.SaveDirectory()), "the save directory was made");
}

void SessionDesktopTest::trayClickBringsTheWindowBackAndItsButtonStops()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY2(recorder.WaitTrayIcon(), "no tray icon");
    m_desktop.Click(recorder.TrayIcon());
    QVERIFY2(recorder.WaitShown(), "the click does not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "the click stopped the recording");
    QVERIFY(recorder.RecordFor(1500));
    recorder.Click("record.record");
    QVERIFY2(recorder.WaitForTool(), "the button does not stop the recording");
    QVERIFY(recorder.IsShown());
    ExpectPlayable(recorder);
}

void SessionDesktopTest::trayDoubleClickBringsTheWindowBack()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY2(recorder.WaitTrayIcon(), "no tray icon");
    m_desktop.Click(recorder.TrayIcon(), 1, 2);
    QVERIFY2(recorder.WaitShown(), "the clicks do not bring the window back");
    QVERIFY2(recorder.ToolRuns(), "the clicks stopped the recording");
}

void SessionDesktopTest::trayStartsTheNextRecording()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.WaitForTool());
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY2(recorder.WaitHidden(), "the tray's Start does not hide the window");
    QVERIFY(WaitUntil([&] { return recorder.Recordings().size() == 2; }));
    QVERIFY(WaitUntil([&] { return QFileInfo(recorder.Recording()).size() > 0; }));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.WaitForTool());
    ExpectPlayable(recorder, 2);
}

void SessionDesktopTest::quitFromTrayWhileRecordingFinishesTheFile()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY(recorder.ChooseInTray(2));
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY(!QFile::exists(recorder.ErrorFile()));
    ExpectPlayable(recorder);
}

// Quit starts a recording first. This is intended.
void SessionDesktopTest::quitFromTrayWhileIdleLeavesAFinishedFile()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitForTool());
    QVERIFY(recorder.ChooseInTray(2));
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY(!QFile::exists(recorder.ErrorFile()));
    ExpectPlayable(recorder, 2);
}

void SessionDesktopTest::closingTheWindowWhileRecordingFinishesTheFile()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.WaitTrayIcon());
    m_desktop.Click(recorder.TrayIcon());
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.RecordFor(1500));
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY(!QFile::exists(recorder.ErrorFile()));
    ExpectPlayable(recorder);
}

void SessionDesktopTest::signalToTheRecorderFinishesTheFile_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("end of the session") << SIGTERM;
    QTest::newRow("closed terminal") << SIGHUP;
    QTest::newRow("killed") << SIGKILL;
}

// It ends at once; what it has started finishes the file.
void SessionDesktopTest::signalToTheRecorderFinishesTheFile()
{
    QFETCH(int, number);
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(2500));
    QCOMPARE(kill(static_cast<pid_t>(recorder.Pid()), number), 0);
    QVERIFY2(WaitUntil([&] { return IsOrdinary(recorder.Recording()); }),
             "the recording goes on, or its file is not finished");
    ExpectPlayable(recorder);
    QVERIFY2(ReadRecording(recorder.Recording()).seconds >= 1, "most of it is missing");
}

void SessionDesktopTest::recordPressedManyTimesAtOnceHarmsNothing()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    recorder.Click("record.record", 20);
    QVERIFY2(recorder.BringToRest(), "it neither records nor rests");
    const qsizetype before = recorder.Recordings().size();
    // So that the next file gets another name.
    QVERIFY(recorder.RecordFor(1000));
    QVERIFY2(recorder.StartRecording(), "it does not record any more");
    QVERIFY(recorder.RecordFor(1000));
    QVERIFY2(recorder.BringToRest(), "it neither records nor rests");
    QVERIFY(recorder.IsRunning());
    ExpectPlayable(recorder, static_cast<int>(before) + 1);
}

void SessionDesktopTest::saveDirectoryMayHaveAnyName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("blanks") << "my  own recordings";
    QTest::newRow("apostrophe") << "Ann's [recordings] (new), 100% & more";
    QTest::newRow("letters") << QString::fromUtf8("Aufnähmen \u4e2d\u6587 \u0416");
}

void SessionDesktopTest::saveDirectoryMayHaveAnyName()
{
    QFETCH(QString, name);
    Recorder recorder(m_desktop);
    recorder.SetSaveDirectory(recorder.SaveDirectory() + name);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY2(recorder.StartRecording(), "no file grows");
    QVERIFY(recorder.RecordFor(1000));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitForTool());
    ExpectPlayable(recorder);
}

void SessionDesktopTest::withoutArgumentASecondCopyShowsTheWindow()
{
    if (geteuid() != 0) {
        QSKIP("only root needs no password for this");
    }
    Recorder recorder(m_desktop);
    QVERIFY2(recorder.StartAsLauncher(), "no window appears");
    QCOMPARE(recorder.WaitForEnd(), 0); // of the first instance
    QVERIFY2(recorder.IsShown(), "the window goes with the first copy");
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QVERIFY(recorder.WaitHidden());
}

QTEST_GUILESS_MAIN(SessionDesktopTest)
#include "session_desktop_test.moc"
