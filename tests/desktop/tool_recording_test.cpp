// Runs the real program with a screen and a sound server, which has a microphone and an output.
// Unless a test inspects the recording, a stand-in for ffmpeg records its arguments.
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <chrono>
#include <csignal>
#include <memory>
#include <sys/prctl.h>
#include <sys/wait.h>

class ToolRecordingTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void numbersAreUnderstoodWherever_data();
    void numbersAreUnderstoodWherever();
    void screensAreNumberedAsTheServerNamesThem();
    void ffmpegIsToldToReuseTheMemoryOfFrames();
    void recorderThatDiesBeforeTheStartLeavesNoRecording_data();
    void recorderThatDiesBeforeTheStartLeavesNoRecording();
    void quitBeforeTheFirstPictureStillGivesAPicture_data();
    void quitBeforeTheFirstPictureStillGivesAPicture();
    void quitAsSoonAsFfmpegAsksForKeysStillGivesAPicture();
    void signalAtAnyMomentOfTheStartLeavesAMovieOrNothing();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    QString Output() const { return m_folder->filePath("o.mp4"); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void ToolRecordingTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    const QString ffmpeg = m_folder->filePath("ffmpeg");
    QVERIFY(WriteProgram(ffmpeg, "#!/bin/sh\necho \"started $*\"\nexit 42\n"));
    qputenv("LUMENFOLD_FFMPEG", QFile::encodeName(ffmpeg));
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
}

void ToolRecordingTest::numbersAreUnderstoodWherever_data()
{
    QTest::addColumn<QString>("directory");
    QTest::addColumn<bool>("made");
    QTest::addColumn<int>("permissions");
    const int own = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner;
    QTest::newRow("where the list is remembered") << "run" << true << own;
    QTest::newRow("without a place for the list") << "missing" << false << 0;
    QTest::newRow("where others may write the list")
        << "run" << true << (own | QFile::WriteOther | QFile::ExeOther);
}

// The numbers of the list mean the same in the recording, remembered or not.
void ToolRecordingTest::numbersAreUnderstoodWherever()
{
    QFETCH(QString, directory);
    QFETCH(bool, made);
    QFETCH(int, permissions);
    const QString place = m_folder->filePath(directory);
    const QString own = place + "/lumenfold-recorder";
    if (made) {
        QVERIFY(QDir().mkpath(own) && QFile::setPermissions(own, QFile::Permissions(permissions)));
    }
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(place));
    const Outcome list =
        RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", " "});
    QVERIFY2(list.error.contains("[0] Microphone") && list.error.contains("[1] Computer sounds"),
             list.error);
    for (const char* device : {"0:0", "0:1"}) {
        const Outcome outcome =
            RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-i", device, Output()});
        QVERIFY2(outcome.code == 42, outcome.error);
        QVERIFY2(outcome.output.contains("-f s16le"), outcome.output);
    }
    const Outcome outcome = RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-i", "0:2", Output()});
    QCOMPARE(outcome.code, 1);
    QCOMPARE(outcome.error, QByteArray("tool: there is no audio device 2, the list has 2.\n"));
    QCOMPARE(QDir(own).entryList(QDir::Files).isEmpty(),
             directory != "run" || permissions & QFile::WriteOther);
}

// The server names a monitor that was added before the one it began with.
void ToolRecordingTest::screensAreNumberedAsTheServerNamesThem()
{
    const Outcome added =
        RunProgram("xrandr", {"--setmonitor", "added", "300/100x200/100+100+50", "none"});
    QVERIFY2(added.code == 0, added.error);
    const auto remove = qScopeGuard([] { RunProgram("xrandr", {"--delmonitor", "added"}); });
    const auto record = [this](const QString& screen) {
        return RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-i", screen, Output()});
    };
    const QByteArray first = record("0").output;
    QVERIFY2(first.contains("-video_size 300x200 ") && first.contains("-grab_x 100 -grab_y 50 "),
             first);
    const QByteArray second = record("1").output;
    QVERIFY2(second.contains("-video_size 1280x800 ") && second.contains("-grab_x 0 -grab_y 0 "),
             second);
    const Outcome third = record("2");
    QCOMPARE(third.code, 1);
    QCOMPARE(third.error, QByteArray("tool: there is no screen 2, the display has 2.\n"));
}

// bench/run measures what it gains.
void ToolRecordingTest::ffmpegIsToldToReuseTheMemoryOfFrames()
{
    QVERIFY(WriteProgram(m_folder->filePath("ffmpeg"), "#!/bin/sh\necho $GLIBC_TUNABLES\n"));
    const auto settings = [this] {
        return RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-i", "0", Output()}).output;
    };
    const QByteArray before = qgetenv("GLIBC_TUNABLES");
    const auto restore = qScopeGuard([&] { qputenv("GLIBC_TUNABLES", before); });
    qunsetenv("GLIBC_TUNABLES");
    QCOMPARE(settings(), QByteArray("glibc.malloc.tcache_count=0\n"));
    qputenv("GLIBC_TUNABLES", "glibc.malloc.arena_max=1");
    QCOMPARE(settings(), QByteArray("glibc.malloc.arena_max=1\n"));
}

void ToolRecordingTest::recorderThatDiesBeforeTheStartLeavesNoRecording_data()
{
    QTest::addColumn<bool>("dies");
    QTest::addColumn<QList<int>>("harmless");
    QTest::addColumn<int>("code");
    QTest::newRow("dies") << true << QList<int>() << 1;
    QTest::newRow("lives") << false << QList<int>() << 42;
    QTest::newRow("lives, harmless signals") << false << QList{SIGUSR1, SIGUSR2, SIGPIPE} << 42;
}

// `tool` connects to the screen through this test, which can stop it half way.
void ToolRecordingTest::recorderThatDiesBeforeTheStartLeavesNoRecording()
{
    QFETCH(bool, dies);
    QFETCH(QList<int>, harmless);
    QFETCH(int, code);
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); // this test is notified when it ends
    QTcpServer server;
    QVERIFY2(server.listen(QHostAddress::LocalHost), qPrintable(server.errorString()));
    QProcess recorder;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DISPLAY", QString("127.0.0.1:%1").arg(server.serverPort() - 6000));
    recorder.setProcessEnvironment(environment);
    recorder.start("/bin/sh", {"-c", "\"$@\" >/dev/null & echo $!; wait $!; echo $?", "sh",
                               TOOL_PROGRAM, "-f", "avfoundation", "-i", "0", Output()});
    QVERIFY(server.waitForNewConnection(10000));
    const std::unique_ptr<QTcpSocket> asked(server.nextPendingConnection());
    QVERIFY(recorder.bytesAvailable() > 0 || recorder.waitForReadyRead());
    const pid_t tool = recorder.readLine().trimmed().toInt();
    QVERIFY(tool > 0);
    for (const int number : harmless) {
        QCOMPARE(kill(tool, number), 0);
    }
    if (dies) {
        recorder.kill();
        QVERIFY(recorder.waitForFinished());
    }
    QLocalSocket screen;
    screen.connectToServer("/tmp/.X11-unix/X" + qEnvironmentVariable("DISPLAY").mid(1));
    QVERIFY2(screen.waitForConnected(), qPrintable(screen.errorString()));
    const auto pass = [](QIODevice& from, QIODevice& to) { to.write(from.readAll()); };
    connect(asked.get(), &QTcpSocket::readyRead, &screen, [&] { pass(*asked, screen); });
    connect(&screen, &QLocalSocket::readyRead, asked.get(), [&] { pass(screen, *asked); });
    pass(*asked, screen);
    QTRY_COMPARE(asked->state(), QTcpSocket::UnconnectedState);
    int status = 0;
    if (dies) {
        QCOMPARE(waitpid(tool, &status, 0), tool);
    } else {
        QTRY_COMPARE(recorder.state(), QProcess::NotRunning);
        status = recorder.readLine().toInt() << 8;
    }
    QVERIFY2(WIFEXITED(status) && WEXITSTATUS(status) == code,
             qPrintable(QString("status %1").arg(status)));
    QVERIFY2(!QFile::exists(Output()), "an empty file is left");
}

void ToolRecordingTest::quitBeforeTheFirstPictureStillGivesAPicture_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QString>("device");
    QTest::addColumn<QString>("pixels");
    // As on a busy machine.
    const QByteArray late("case \"$*\" in *max_muxing*) sleep 2;; esac\n");
    for (const char* pixels : {"yuv420p", "yuv444p"}) { // ffmpeg grabs the screen for the second
        QTest::addRow("at once, %s", pixels) << QByteArray() << "0" << pixels;
        QTest::addRow("at once, with sound, %s", pixels) << QByteArray() << "0:0" << pixels;
        QTest::addRow("ffmpeg starts late, %s", pixels) << late << "0" << pixels;
    }
}

void ToolRecordingTest::quitBeforeTheFirstPictureStillGivesAPicture()
{
    QFETCH(QByteArray, before);
    QFETCH(QString, device);
    QFETCH(QString, pixels);
    QVERIFY(WriteProgram(m_folder->filePath("ffmpeg"),
                         "#!/bin/sh\n" + before + "exec /usr/bin/env ffmpeg \"$@\"\n"));
    const QString path = m_folder->filePath("short.mp4");
    Take take(path, device, {}, pixels);
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd(), "the recording goes on");
    QVERIFY2(!PictureDigests(path).isEmpty(), take.Text());
    QCOMPARE(DecodingErrors(path), QByteArray());
}

// The recorder answers ffmpeg's output, so the key arrives just when ffmpeg starts to look for one.
void ToolRecordingTest::quitAsSoonAsFfmpegAsksForKeysStillGivesAPicture()
{
    qunsetenv("LUMENFOLD_FFMPEG");
    constexpr int times = 12; // enough to notice a failure in every fourth
    for (int i = 0; i < times; ++i) {
        const QString path = m_folder->filePath(QString("short %1.mp4").arg(i));
        Take take(path, "0");
        // Without the pauses of QTRY_VERIFY().
        const QDeadlineTimer patience(20000);
        while (!take.Text().contains("Press [q]")) {
            QVERIFY2(!patience.hasExpired(), take.Text());
        }
        take.Type("q\r\n");
        QVERIFY2(take.WaitForEnd(), "the recording goes on");
        QVERIFY2(!PictureDigests(path).isEmpty(), take.Text());
    }
}

void ToolRecordingTest::signalAtAnyMomentOfTheStartLeavesAMovieOrNothing()
{
    qunsetenv("LUMENFOLD_FFMPEG");
    constexpr int times = 12;
    constexpr int step = 50; // ms; the first picture comes after 100 to 500
    for (int i = 0; i < times; ++i) {
        const QString path = m_folder->filePath(QString("short %1.mp4").arg(i));
        Take take(path, "0");
        QTRY_VERIFY_WITH_TIMEOUT(take.Tool() > 0, 20000);
        const QDeadlineTimer moment(std::chrono::milliseconds(i * step), Qt::PreciseTimer);
        while (!moment.hasExpired()) {
        }
        take.EndTool(SIGTERM);
        QVERIFY2(take.WaitForEnd(), "the recording goes on");
        if (QFile::exists(path)) {
            QVERIFY2(!PictureDigests(path).isEmpty(), take.Text());
        }
    }
}

QTEST_GUILESS_MAIN(ToolRecordingTest)
#include "tool_recording_test.moc"
