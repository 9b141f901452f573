// Runs the real program with a stand-in for ffmpeg that records its arguments.
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

class ToolProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void argumentsReachFfmpegByteForByte();
    void exitCodeAndInputAreFfmpegs();
    void withoutFfmpegOneLineAnd127();
    void chosenFfmpegThatIsMissingIsNamed();
    void editWithoutFfmpegTellsItsFailure();
    void ffmpegInTheWorkingDirectoryIsNotRun_data();
    void ffmpegInTheWorkingDirectoryIsNotRun();
    static void listWithoutScreenAndSoundSaysWhy_data();
    void listWithoutScreenAndSoundSaysWhy();
    void listNeedsNoPlaceToRememberIt();
    void listLeavesTheRuntimeDirectoryOfAnotherUserAlone();
    void recordingWithoutDisplayStartsNoFfmpeg();
    void malformedDeviceStartsNoFfmpeg();
    void editingLoadsNoSoundLibrary();
    static void listWithoutALibrarySaysSo_data();
    void listWithoutALibrarySaysSo();

private:
    // Runs it and returns the exit code, or -1 if it does not exit by itself.
    int Run(const QStringList& arguments, const QByteArray& input = {});

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcessEnvironment m_environment;
    QString m_directory; // the working directory; empty: this program's
    QByteArray m_output;
    QByteArray m_error;
};

void ToolProgramTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QFile script(m_folder->filePath("fake ffmpeg"));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\nprintf '%s\\n' \"started\" >&2\n"
                 "for a in \"$@\"; do printf '%s\\0' \"$a\"; done\ncat >&2\nexit 42\n");
    script.close();
    QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    m_directory.clear();
    m_environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY"}) {
        m_environment.remove(QString::fromLatin1(name));
    }
    m_environment.insert("LUMENFOLD_FFMPEG", script.fileName());
    m_environment.insert("XDG_RUNTIME_DIR", m_folder->path());
    m_environment.insert("HOME", m_folder->path());
    m_environment.insert("PULSE_SERVER", "unix:" + m_folder->filePath("no server"));
}

int ToolProgramTest::Run(const QStringList& arguments, const QByteArray& input)
{
    QProcess process;
    process.setProcessEnvironment(m_environment);
    process.setWorkingDirectory(m_directory);
    process.start(TOOL_PROGRAM, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    m_output = process.readAllStandardOutput();
    m_error = process.readAllStandardError();
    return process.exitCode();
}

void ToolProgramTest::argumentsReachFfmpegByteForByte()
{
    const QStringList arguments = {
        "-i", "/v/a \"b\"\n'c' \u4e2d\u00e4.mp4", "-vbsf", "x", "", " ", "o|1.ts"};
    QCOMPARE(Run(arguments), 42);
    QStringList expected = arguments;
    expected[2] = QStringLiteral("-bsf:v");
    QCOMPARE(m_output, expected.join(QChar(u'\0')).toUtf8() + '\0');
}

void ToolProgramTest::exitCodeAndInputAreFfmpegs()
{
    QCOMPARE(Run({"-i", "a"}, "q\r\n"), 42);
    QCOMPARE(m_error, QByteArray("started\nq\r\n"));
}

void ToolProgramTest::withoutFfmpegOneLineAnd127()
{
    m_environment.remove("LUMENFOLD_FFMPEG");
    m_environment.insert("PATH", m_folder->path());
    QCOMPARE(Run({"-i", "a"}), 127);
    QCOMPARE(m_error.count('\n'), 1);
    QVERIFY2(m_error.contains("ffmpeg"), m_error);
}

// The recorder takes any other output for success.
void ToolProgramTest::editWithoutFfmpegTellsItsFailure()
{
    m_environment.insert("LUMENFOLD_FFMPEG", "/no/such/program");
    const QStringList conversion = {"-vcodec", "copy",  "-acodec",
                                    "copy",    "-vbsf", "h264_mp4toannexb"};
    const QStringList join = {"-acodec", "copy", "-vcodec", "copy", "-absf", "aac_adtstoasc"};
    const QStringList cut = {"-ss", "0", "-t", "1", "-codec", "copy"};
    for (const QStringList& words : {conversion, join, cut}) {
        QCOMPARE(Run(QStringList{"-i", "concat:a|"} + words + QStringList{"out"}), 127);
        QVERIFY2(m_error.contains("No such file") && m_error.contains("/no/such/program"), m_error);
    }
}

void ToolProgramTest::chosenFfmpegThatIsMissingIsNamed()
{
    m_environment.insert("LUMENFOLD_FFMPEG", "/no/such/program");
    QCOMPARE(Run({"-i", "a"}), 127);
    QCOMPARE(m_error.count('\n'), 1);
    QVERIFY2(m_error.contains("/no/such/program"), m_error);
}

void ToolProgramTest::ffmpegInTheWorkingDirectoryIsNotRun_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("chosen");
    QTest::addColumn<QByteArray>("reason");
    const QByteArray missing = "no ffmpeg is installed";
    QTest::newRow("empty entry") << "/nowhere::/nowhere either" << QString() << missing;
    QTest::newRow("the working directory's name") << "." << QString() << missing;
    QTest::newRow("a folder in it") << "bin:/nowhere" << QString() << missing;
    const QByteArray refused = "LUMENFOLD_FFMPEG names bin/ffmpeg, which is not a full path";
    QTest::newRow("chosen") << "/usr/bin:/bin"
                            << "bin/ffmpeg" << refused;
}

// The directory a recorder happens to be started in is not trusted.
void ToolProgramTest::ffmpegInTheWorkingDirectoryIsNotRun()
{
    QFETCH(QString, path);
    QFETCH(QString, chosen);
    QFETCH(QByteArray, reason);
    const QString program = m_environment.value("LUMENFOLD_FFMPEG");
    QVERIFY(QDir(m_folder->path()).mkdir("bin"));
    QVERIFY(QFile::copy(program, m_folder->filePath("ffmpeg")));
    QVERIFY(QFile::copy(program, m_folder->filePath("bin/ffmpeg")));
    m_environment.insert("PATH", path);
    m_environment.insert("LUMENFOLD_FFMPEG", chosen);
    m_directory = m_folder->path();
    QCOMPARE(Run({"-i", "a"}), 127);
    QVERIFY2(m_error.contains(reason) && m_error.count('\n') == 1, m_error);
}

void ToolProgramTest::listWithoutScreenAndSoundSaysWhy_data()
{
    QTest::addColumn<QString>("wayland");
    QTest::addColumn<QString>("x");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("no session") << ""
                                << "" << QByteArray("neither WAYLAND_DISPLAY nor DISPLAY is set.");
    QTest::newRow("no X server") << ""
                                 << ":no" << QByteArray("the X display :no cannot be opened.");
    QTest::newRow("no compositor")
        << "wayland-no"
        << "" << QByteArray("the Wayland display wayland-no cannot be opened.");
    // What an X server shows in a Wayland session is black.
    QTest::newRow("no compositor beside an X server")
        << "wayland-no"
        << ":no" << QByteArray("the Wayland display wayland-no cannot be opened.");
    QTest::newRow("a name that is too long")
        << QString(500, 'w') << "" << QByteArray(500, 'w') + " cannot be opened.";
}

void ToolProgramTest::listWithoutScreenAndSoundSaysWhy()
{
    QFETCH(QString, wayland);
    QFETCH(QString, x);
    QFETCH(QByteArray, reason);
    m_environment.insert("WAYLAND_DISPLAY", wayland);
    m_environment.insert("DISPLAY", x);
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    QVERIFY2(m_error.startsWith("[AVFoundation indev @ 0x"), m_error);
    QVERIFY2(m_error.contains("No screen can be recorded: ") && m_error.contains(reason), m_error);
    QVERIFY2(!m_error.contains("Capture screen") && !m_error.contains("audio devices:"), m_error);
    QVERIFY2(m_output.isEmpty(), m_output);
}

void ToolProgramTest::listNeedsNoPlaceToRememberIt()
{
    m_environment.insert("XDG_RUNTIME_DIR", m_folder->filePath("missing"));
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    m_environment.remove("XDG_RUNTIME_DIR");
    m_environment.insert("TMPDIR", m_folder->filePath("missing"));
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    QVERIFY2(m_error.startsWith("[AVFoundation indev @ 0x"), m_error);
}

// Root for a user: what it made there, the user's own `tool` could not change.
void ToolProgramTest::listLeavesTheRuntimeDirectoryOfAnotherUserAlone()
{
    if (geteuid() != 0) {
        QSKIP("needs root");
    }
    const QString runtime = m_folder->filePath("run");
    QVERIFY(QDir().mkdir(runtime));
    m_environment.insert("XDG_RUNTIME_DIR", runtime);
    m_environment.insert("TMPDIR", m_folder->path());
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    QCOMPARE(QDir(runtime).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList{"lumenfold-recorder"});
    QVERIFY(QDir(runtime + "/lumenfold-recorder").removeRecursively());
    QCOMPARE(chown(qPrintable(runtime), 65534, 65534), 0);
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    QVERIFY2(QDir(runtime).isEmpty(), "root left something in the user's directory");
    QVERIFY2(QFile::exists(m_folder->filePath("lumenfold-recorder-0/devices")),
             "the devices are not remembered");
}

void ToolProgramTest::recordingWithoutDisplayStartsNoFfmpeg()
{
    QCOMPARE(Run({"-f", "avfoundation", "-framerate", "30", "-i", "0", "o.mp4"}), 1);
    QVERIFY2(!m_error.contains("started") && m_error.contains("DISPLAY"), m_error);
}

void ToolProgramTest::malformedDeviceStartsNoFfmpeg()
{
    QCOMPARE(Run({"-f", "avfoundation", "-i", "zero", "o.mp4"}), 1);
    QVERIFY2(!m_error.contains("started") && m_error.contains("\"zero\""), m_error);
    QCOMPARE(m_error.count('\n'), 1);
}

// It brings two dozen libraries along, which take longer to load than everything else `tool` does.
void ToolProgramTest::editingLoadsNoSoundLibrary()
{
    m_environment.insert("LD_TRACE_LOADED_OBJECTS", "1");
    QCOMPARE(Run({}), 0);
    QVERIFY2(m_output.contains("libc."), m_output);
    QVERIFY2(!m_output.contains("libpulse"), m_output);
}

void ToolProgramTest::listWithoutALibrarySaysSo_data()
{
    QTest::addColumn<QString>("library");
    QTest::addColumn<QString>("wayland");
    QTest::addColumn<bool>("isLoaded");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("sound") << "libpulse.so.0"
                           << "" << true << QByteArray();
    QTest::newRow("Wayland") << "libwayland-client.so.0"
                             << "wayland-no" << true
                             << QByteArray("libwayland-client is missing or too old.");
    QTest::newRow("Wayland elsewhere") << "libwayland-client.so.0"
                                       << "" << false << QByteArray("WAYLAND_DISPLAY");
}

void ToolProgramTest::listWithoutALibrarySaysSo()
{
    QFETCH(QString, library);
    QFETCH(QString, wayland);
    QFETCH(bool, isLoaded);
    QFETCH(QByteArray, reason);
    QFile broken(m_folder->filePath(library)); // found first, but not a valid library
    QVERIFY(broken.open(QIODevice::WriteOnly));
    broken.close();
    m_environment.insert("WAYLAND_DISPLAY", wayland);
    m_environment.insert("LD_LIBRARY_PATH", m_folder->path());
    m_environment.insert("LUMENFOLD_FFMPEG", m_folder->filePath("none")); // one program, one log
    m_environment.insert("LD_DEBUG", "libs");
    m_environment.insert("LD_DEBUG_OUTPUT", m_folder->filePath("loader"));
    QCOMPARE(Run({"-f", "avfoundation", "-list_devices", "true", "-i", " "}), 1);
    QVERIFY2(m_error.contains("[AVFoundation indev @ 0x") && m_error.contains(reason), m_error);
    QVERIFY2(!m_error.contains("audio devices:"), m_error);
    const QStringList logs = QDir(m_folder->path()).entryList({"loader.*"});
    QCOMPARE(logs.size(), 1);
    QFile log(m_folder->filePath(logs.first()));
    QVERIFY(log.open(QIODevice::ReadOnly));
    QVERIFY2(log.readAll().contains(broken.fileName().toUtf8()) == isLoaded,
             isLoaded ? "the library was not asked for" : "the library was asked for");
}

QTEST_GUILESS_MAIN(ToolProgramTest)
#include "tool_program_test.moc"
