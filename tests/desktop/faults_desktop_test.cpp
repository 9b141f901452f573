// What can go wrong around the program: a `tool` that fails in every way, read-only directories, a
// full disk. The program never crashes, and tells the user when a recording did not start.
#include "tests/support/desktop_test.h"
#include "tests/support/recording_file.h"
#include "tests/support/short_tool_wait.h"

#include <QTest>

class FaultsDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void toolThatCannotStartIsToldAtOnce_data();
    void toolThatCannotStartIsToldAtOnce();
    void toolThatStartsAndFailsHarmsNothing_data();
    void toolThatStartsAndFailsHarmsNothing();
    void toolThatIgnoresTheQuitIsEndedWithTheProgram();
    void oddDeviceListingStillRecords_data();
    void oddDeviceListingStillRecords();
    void unwritableSaveDirectoryHarmsNothing();
    void saveDirectoryThatVanishesIsMadeAgain();
    void oddSettingsFileGivesTheDefaultDirectory_data();
    void oddSettingsFileGivesTheDefaultDirectory();
    void recordingStopsBelowTenMebibytesAndNotBefore();

private:
    void RecordAndStop(Recorder& recorder, int milliseconds = 500);
};

// A recording with no expectations, stopped from the tray.
void FaultsDesktopTest::RecordAndStop(Recorder& recorder, int milliseconds)
{
    recorder.Click("record.record");
    QVERIFY2(recorder.WaitHidden(), "the window is not hidden");
    QElapsedTimer time;
    time.start();
    QVERIFY(WaitUntil([&] { return time.hasExpired(milliseconds); }));
    QVERIFY2(recorder.ChooseInTray(1), "the tray's menu does not open");
    QVERIFY2(recorder.WaitShown(), "the window does not come back");
}

void FaultsDesktopTest::toolThatCannotStartIsToldAtOnce_data()
{
    QTest::addColumn<QString>("fault");
    QTest::newRow("missing") << "missing";
    QTest::newRow("not executable") << "not executable";
    QTest::newRow("no program") << "no program";
}

void FaultsDesktopTest::toolThatCannotStartIsToldAtOnce()
{
    QFETCH(QString, fault);
    Recorder recorder(m_desktop);
    const QString tool = recorder.Beside("tool");
    if (fault == "not executable") {
        QVERIFY(QFile::setPermissions(tool, QFile::ReadOwner | QFile::WriteOwner));
    } else {
        QVERIFY(QFile::remove(tool));
    }
    if (fault == "no program") {
        QVERIFY(QDir().mkdir(tool));
    }
    QVERIFY(recorder.StartOnRecordPage());
    recorder.Click("record.record");
    QVERIFY2(recorder.WaitHidden(), "the window is not hidden");
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    QVERIFY2(recorder.CloseMessage(), "the message cannot be closed");
    QVERIFY2(recorder.IsRunning(), "the program ended with the message");
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY2(!recorder.Message(), "it is told again after the stop");
    QCOMPARE(recorder.Recordings(), QStringList());
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(), 0);
}

void FaultsDesktopTest::toolThatStartsAndFailsHarmsNothing_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<bool>("ends");
    QTest::newRow("dies at once") << QByteArray("exit 3\n") << true;
    QTest::newRow("is killed") << QByteArray("kill -KILL $$\n") << true;
    QTest::newRow("prints nothing") << QByteArray("cat >/dev/null\n") << false;
    QTest::newRow("prints a gigabyte") << QByteArray("head -c 1G /dev/zero | tr '\\0' x\n") << true;
    QTest::newRow("prints zero bytes")
        << QByteArray("head -c 1M /dev/zero\nread -r key\n") << false;
    QTest::newRow("reads nothing") << QByteArray("exec 0<&-; printf frame=; exit 0\n") << true;
}

void FaultsDesktopTest::toolThatStartsAndFailsHarmsNothing()
{
    QFETCH(QByteArray, script);
    Recorder recorder(m_desktop);
    recorder.ReplaceTool("[[ $* == *-list_devices* ]] && exec \"$REAL\" \"$@\"\n" + script);
    recorder.UseShortToolWait();
    QVERIFY(recorder.StartOnRecordPage());
    RecordAndStop(recorder);
    if (QTest::currentTestFailed()) {
        return;
    }
    QFETCH(bool, ends);
    if (ends) {
        QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    }
    QVERIFY(recorder.IsRunning());
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    // A tool that does not exit gets the whole wait.
    QCOMPARE(recorder.WaitForEnd(), 0);
    QVERIFY(!QFile::exists(recorder.ErrorFile()));
}

void FaultsDesktopTest::toolThatIgnoresTheQuitIsEndedWithTheProgram()
{
    Recorder recorder(m_desktop);
    recorder.ReplaceTool("[[ $* == *-list_devices* ]] && exec \"$REAL\" \"$@\"\n"
                         "while sleep 0.1; do printf 'frame=1\\r'; done\n");
    // ./test --long waits as long as the product does.
    const bool isLong = qEnvironmentVariableIsSet("LUMENFOLD_PRODUCT_WAIT");
    const int wait = isLong ? 30000 : kShortToolWaitMs;
    if (!isLong) {
        recorder.UseShortToolWait();
    }
    QVERIFY(recorder.StartOnRecordPage());
    RecordAndStop(recorder);
    if (QTest::currentTestFailed()) {
        return;
    }
    QVERIFY2(recorder.ToolRuns(), "the tool ended by itself");
    QElapsedTimer time;
    time.start();
    m_desktop.Close(m_desktop.Shown(Recorder::kTitle)->id);
    QCOMPARE(recorder.WaitForEnd(45000), 0);
    QVERIFY2(time.hasExpired(wait - 100),
             qPrintable(QString("the tool had %1 ms to finish its file").arg(time.elapsed())));
}

void FaultsDesktopTest::oddDeviceListingStillRecords_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::newRow("empty") << QByteArray("exit 1\n");
    QTest::newRow("cut off") << QByteArray("\"$REAL\" \"$@\" 2>&1 | head -c 150\n");
    QTest::newRow("line ends of Windows") << QByteArray("\"$REAL\" \"$@\" 2>&1 | sed 's/$/\\r/'\n");
    QTest::newRow("zero bytes") << QByteArray("head -c 10000 /dev/zero\n");
}

void FaultsDesktopTest::oddDeviceListingStillRecords()
{
    QFETCH(QByteArray, script);
    Recorder recorder(m_desktop);
    recorder.ReplaceTool("[[ $* != *-list_devices* ]] && exec \"$REAL\" \"$@\"\n" + script);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY2(recorder.StartRecording(), "no file grows");
    QVERIFY(recorder.RecordFor(1000));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitForTool());
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

// A file is where the directory should be: root can write everywhere else.
void FaultsDesktopTest::unwritableSaveDirectoryHarmsNothing()
{
    Recorder recorder(m_desktop);
    const QString obstacle = recorder.Beside("obstacle");
    QFile file(obstacle);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("kept");
    file.close();
    recorder.SetSaveDirectory(obstacle + "/recordings");
    QVERIFY(recorder.StartOnRecordPage());
    recorder.Click("record.record");
    QVERIFY(recorder.WaitHidden());
    QVERIFY2(WaitUntil([&] { return recorder.Message().has_value(); }), "nothing is told");
    QVERIFY2(recorder.Log().contains("could not be started: " + obstacle),
             qPrintable(recorder.Log()));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.IsRunning());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("kept"));
}

void FaultsDesktopTest::saveDirectoryThatVanishesIsMadeAgain()
{
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    const QString elsewhere = recorder.SaveDirectory() + " moved";
    QVERIFY(QFile::rename(recorder.SaveDirectory(), elsewhere));
    QVERIFY(recorder.RecordFor(1500));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitShown());
    QVERIFY(recorder.WaitForTool());
    const QStringList names = QDir(elsewhere).entryList({"*.mp4"});
    QCOMPARE(names.size(), 1);
    const RecordingFile moved = ReadRecording(elsewhere + '/' + names[0]);
    QVERIFY2(moved.fault.isEmpty(), qPrintable(moved.fault));

    QVERIFY2(recorder.StartRecording(), "it does not record any more");
    QVERIFY(recorder.RecordFor(1000));
    QVERIFY(recorder.ChooseInTray(1));
    QVERIFY(recorder.WaitForTool());
    const RecordingFile next = ReadRecording(recorder.Recording());
    QVERIFY2(next.fault.isEmpty(), qPrintable(next.fault));
}

void FaultsDesktopTest::oddSettingsFileGivesTheDefaultDirectory_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("garbage") << QByteArray("\xff\xfe\0[[[\n=\n\\x\0", 14);
    QTest::newRow("other keys") << QByteArray("[screen_record]\nsave=/nowhere\n");
    QTest::newRow("directory") << QByteArray();
}

void FaultsDesktopTest::oddSettingsFileGivesTheDefaultDirectory()
{
    QFETCH(QByteArray, content);
    Recorder recorder(m_desktop);
    const QString path = recorder.Beside("ScreenRecord.ini");
    if (content.isEmpty()) {
        QVERIFY(QDir().mkdir(path));
    } else {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY2(recorder.StartRecording(), "no file grows in the default directory");
    if (!content.isEmpty()) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), content);
    }
}

void FaultsDesktopTest::recordingStopsBelowTenMebibytesAndNotBefore()
{
    if (!QFile::exists(STATVFS_PRELOAD)) {
        QFAIL("the library that simulates a full disk is not built");
    }
    Recorder recorder(m_desktop);
    const QString freeBytes = recorder.Beside("free");
    const auto feign = [&](const QByteArray& bytes) {
        QFile file(freeBytes + ".new");
        return file.open(QIODevice::WriteOnly) && file.write(bytes) > 0 && file.flush() &&
               std::rename(qPrintable(freeBytes + ".new"), qPrintable(freeBytes)) == 0;
    };
    QVERIFY(feign("10485760"));
    recorder.SetEnvironment("LD_PRELOAD", STATVFS_PRELOAD);
    recorder.SetEnvironment("LUMENFOLD_FAKE_FREE_SPACE", freeBytes);
    QVERIFY(recorder.StartOnRecordPage());
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(3000));
    QVERIFY2(!recorder.IsShown() && recorder.ToolRuns(),
             "stopped with exactly 10485760 bytes free");
    QVERIFY(feign("10485759"));
    QVERIFY2(recorder.WaitShown(), "not stopped with 10485759 bytes free");
    QVERIFY2(WaitUntil([&] { return m_desktop.Shown("Recorder").has_value(); }), "no message");
    m_desktop.Press({"Return"});
    QVERIFY2(WaitUntil([&] { return !m_desktop.Shown("Recorder"); }), "the message stays");
    QVERIFY(recorder.WaitForTool());
    const RecordingFile file = ReadRecording(recorder.Recording());
    QVERIFY2(file.fault.isEmpty(), qPrintable(file.fault));
}

QTEST_GUILESS_MAIN(FaultsDesktopTest)
#include "faults_desktop_test.moc"
