// Recordings that are stopped by something other than a key, or that lose one of their processes.
// All recordings of a test run at once, on a small screen.
#include "tests/support/ordinary_movie.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

namespace {

constexpr double kBefore = 1.5; // seconds recorded before something happens

double SecondsIn(const QString& path)
{
    return static_cast<double>(PictureDigests(path).size()) / 29.97;
}

// The files for temporary data and the shared memory of others' making that a process has open.
QByteArrayList TemporaryFiles(pid_t process, const QString& recording)
{
    QByteArrayList found;
    // The program itself, and CTest's log as its messages: the tree may be below /tmp.
    const QByteArray buildFolder =
        QFile::encodeName(QDir(QCoreApplication::applicationDirPath() + "/..").canonicalPath()) +
        '/';
    const QString folder = QString("/proc/%1/").arg(process);
    const QByteArray all =
        RunProgram("/bin/ls", {"-l", folder + "fd"}).output + Content(folder + "maps");
    for (const QByteArray& line : all.split('\n')) {
        const QByteArray name = line.mid(line.indexOf(" /") + 1);
        const bool isBuilt = name.startsWith(buildFolder);
        if ((name.startsWith("/tmp/") || name.startsWith("/dev/shm/")) && !isBuilt &&
            !name.startsWith(QFile::encodeName(recording))) {
            found << name;
        }
    }
    return found;
}

// The shared memory segments that this process has made.
bool HasSharedMemory(pid_t process)
{
    for (const QByteArray& line : Content("/proc/sysvipc/shm").split('\n')) {
        if (line.simplified().split(' ').value(4).toInt() == process) {
            return true;
        }
    }
    return false;
}

} // namespace

class ToolEndTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void recordingIsTwoProcesses();
    void signalEndsTheRecordingAsAKeyDoes();
    void otherSignalsDoNoHarm();
    void endOfTheKeyboardEndsTheRecording();
    void killedProcessLeavesAMovie();
    void endOfAScriptInPlaceOfFfmpegLeavesAMovie();
    void endOfAScriptLeavesNobodyGrabbing();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    struct Case
    {
        QByteArray name;
        std::function<void(Take&)> act;
        std::unique_ptr<Take> take = {};
        double before = 0; // seconds ffmpeg had read
        pid_t tool = 0;
        pid_t ffmpeg = 0;
    };
    void RunAll(std::vector<Case>& cases, const QString& name, const QStringList& environment = {});
    static void ExpectWhole(const Case& one);

    QTemporaryDir m_folder;
    QString m_script; // a variable that names a script which runs ffmpeg
    TestPatternProcess m_pattern{QStringList{"--rate", "30"}};
};

void ToolEndTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    const QString script = m_folder.filePath("ffmpeg");
    QVERIFY(WriteProgram(script, "#!/bin/sh\nffmpeg \"$@\"\nexit $?\n"));
    m_script = "LUMENFOLD_FFMPEG=" + script;
    QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
    RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
}

// Starts them all, performs the action on each, and waits until nothing is left of them.
void ToolEndTest::RunAll(std::vector<Case>& cases, const QString& name,
                         const QStringList& environment)
{
    for (size_t i = 0; i < cases.size(); ++i) {
        const QString path = m_folder.filePath(QString("%1 %2.mp4").arg(name).arg(i));
        cases[i].take = std::make_unique<Take>(path, "0:1", environment);
    }
    for (Case& one : cases) {
        QTRY_VERIFY2_WITH_TIMEOUT(one.take->Taken() >= kBefore, one.take->Text(), 60000);
    }
    for (Case& one : cases) {
        one.tool = one.take->Tool();
        one.ffmpeg = one.take->Ffmpeg();
        QVERIFY2(one.tool > 0 && one.ffmpeg > 0, one.name);
        one.before = one.take->Taken();
        one.act(*one.take);
    }
    for (Case& one : cases) {
        for (const pid_t process : {one.tool, one.ffmpeg}) {
            QTRY_VERIFY2_WITH_TIMEOUT(!IsAlive(process), one.name + ": a process stays", 20000);
        }
        // The X server lets go of it when it sees that its client has gone.
        QTRY_VERIFY2(!HasSharedMemory(one.tool), one.name + ": shared memory stays");
    }
}

// Checks that everything ffmpeg had at that time is in the file, and that it ended in peace.
void ToolEndTest::ExpectWhole(const Case& one)
{
    const QString path = one.take->Path();
    QTRY_VERIFY2(IsOrdinary(path), one.name + ": it is still fragmented");
    QCOMPARE(DecodingErrors(path), QByteArray());
    const double seconds = SecondsIn(path);
    QVERIFY2(seconds >= one.before - 0.1, one.name + ": " + QByteArray::number(seconds) + " s of " +
                                              QByteArray::number(one.before));
    QVERIFY2(one.take->Text().contains("muxing overhead"), one.name + ": " + one.take->Text());
    QVERIFY2(!one.take->Text().contains("Immediate exit"), one.name + ": " + one.take->Text());
}

void ToolEndTest::recordingIsTwoProcesses()
{
    Take take(m_folder.filePath("two.mp4"), "0:0 0:1");
    QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() >= kBefore, take.Text(), 20000);
    QCOMPARE(take.Processes(), (QList<pid_t>{take.Tool(), take.Ffmpeg()}));
    for (const pid_t process : take.Processes()) {
        const QByteArrayList files = TemporaryFiles(process, take.Path());
        QVERIFY2(files.isEmpty(), files.join(", "));
    }
    // Keys and messages, both inputs, inherited and opened again, and what tells the end of all
    // processes that may write.
    const Outcome open = RunProgram("/bin/ls", {"-l", QString("/proc/%1/fd").arg(take.Ffmpeg())});
    QVERIFY2(open.output.count("pipe:") == 2 + 2 * 2 + 1, open.output);
    QVERIFY2(!open.output.contains("socket:"), open.output);
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd() && take.ExitCode() == 0, take.Text());
}

void ToolEndTest::signalEndsTheRecordingAsAKeyDoes()
{
    std::vector<Case> cases;
    for (const int signal : {SIGTERM, SIGHUP, SIGINT}) {
        const QByteArray name = strsignal(signal);
        cases.push_back({name + " to tool", [=](Take& take) { take.EndTool(signal); }});
        cases.push_back({name + " to ffmpeg", [=](Take& take) { take.EndFfmpeg(signal); }});
        cases.push_back({name + " to all at once", [=](Take& take) { take.EndAll(signal); }});
        if (signal != SIGINT) { // the shell in its place waits for its child then
            cases.push_back(
                {name + " to the recorder", [=](Take& take) { take.EndRecorder(signal); }});
        }
    }
    RunAll(cases, "signal");
    for (const Case& one : cases) {
        if (!QTest::currentTestFailed()) {
            ExpectWhole(one);
        }
    }
}

void ToolEndTest::otherSignalsDoNoHarm()
{
    const auto stopAndGoOn = [](pid_t process) {
        kill(process, SIGSTOP);
        QTRY_VERIFY2(IsStopped(process), "it goes on");
        QTest::qWait(300); // frames are due that it does not see
        kill(process, SIGCONT);
    };
    const auto sendAll = [](pid_t process) {
        for (const int signal : {SIGUSR1, SIGUSR2, SIGPIPE}) {
            kill(process, signal);
        }
    };
    std::vector<Case> cases;
    for (const bool ffmpeg : {false, true}) {
        const QByteArray name = ffmpeg ? "ffmpeg" : "tool";
        const auto process = [=](Take& take) { return ffmpeg ? take.Ffmpeg() : take.Tool(); };
        cases.push_back(
            {"SIGUSR1, SIGUSR2, SIGPIPE to " + name, [=](Take& take) { sendAll(process(take)); }});
        cases.push_back(
            {"SIGSTOP and SIGCONT to " + name, [=](Take& take) { stopAndGoOn(process(take)); }});
    }
    for (Case& one : cases) {
        one.act = [act = one.act, name = one.name](Take& take) {
            act(take);
            const double before = take.Taken();
            QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() >= before + 1, name + ": it stands still",
                                      20000);
            take.Type("q\r\n");
        };
    }
    RunAll(cases, "harmless");
    for (const Case& one : cases) {
        if (!QTest::currentTestFailed()) {
            QVERIFY2(one.take->WaitForEnd() && one.take->ExitCode() == 0, one.take->Text());
            ExpectWhole(one);
        }
    }
}

// The recorder has died unnoticed: its end of the pipe is closed.
void ToolEndTest::endOfTheKeyboardEndsTheRecording()
{
    std::vector<Case> cases;
    cases.push_back({"end of the keyboard", [](Take& take) { take.StopTyping(); }});
    RunAll(cases, "keyboard");
    if (QTest::currentTestFailed()) {
        return;
    }
    Take early(m_folder.filePath("early.mp4"), "0");
    early.StopTyping();
    for (Take* take : {cases.front().take.get(), &early}) {
        QVERIFY2(take->WaitForEnd() && take->ExitCode() == 0, take->Text());
        QVERIFY2(IsOrdinary(take->Path()), "it is still fragmented");
        QVERIFY2(SecondsIn(take->Path()) > 0, "no picture");
    }
}

// ffmpeg's part is settled by `tool`. Without `tool` ffmpeg meets the end of its inputs.
void ToolEndTest::killedProcessLeavesAMovie()
{
    std::vector<Case> cases;
    cases.push_back({"ffmpeg is killed", [](Take& take) { take.EndFfmpeg(SIGKILL); }});
    cases.push_back({"tool is killed", [](Take& take) { take.EndTool(SIGKILL); }});
    cases.push_back({"the recorder is killed", [](Take& take) { take.EndRecorder(); }});
    RunAll(cases, "killed");
    if (QTest::currentTestFailed()) {
        return;
    }
    for (const Case& one : cases) {
        QVERIFY2(one.take->WaitForEnd() && one.take->ExitCode() != 0, one.name);
        QCOMPARE(DecodingErrors(one.take->Path()), QByteArray());
        QVERIFY2(SecondsIn(one.take->Path()) >= one.before - 2, one.name);
    }
    QVERIFY2(IsOrdinary(cases[0].take->Path()), "it is still fragmented");
    ExpectWhole(cases[2]);
}

// What the script has started goes on for a moment: `tool` must not settle the file before its end.
void ToolEndTest::endOfAScriptInPlaceOfFfmpegLeavesAMovie()
{
    std::vector<Case> cases;
    for (const int signal : {SIGTERM, SIGHUP, SIGKILL}) {
        cases.push_back({strsignal(signal), [=](const Take& take) { take.EndFfmpeg(signal); }});
    }
    RunAll(cases, "script", {m_script});
    for (const Case& one : cases) {
        if (!QTest::currentTestFailed()) {
            ExpectWhole(one);
        }
    }
}

// Pixels that `tool` does not deliver: ffmpeg takes the pictures itself, without an end.
void ToolEndTest::endOfAScriptLeavesNobodyGrabbing()
{
    Take take(m_folder.filePath("grabbing.mp4"), "0:1", {m_script}, "yuv444p");
    QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() >= kBefore, take.Text(), 20000);
    const double before = take.Taken();
    const pid_t grabber = ChildrenOf(take.Ffmpeg()).value(0);
    QVERIFY(grabber > 0);
    take.EndFfmpeg(SIGKILL);
    QTRY_VERIFY2_WITH_TIMEOUT(!IsAlive(grabber), "ffmpeg goes on", 20000);
    QVERIFY2(take.WaitForEnd(), "the recording goes on");
    QVERIFY2(IsOrdinary(take.Path()), "it is still fragmented");
    QCOMPARE(DecodingErrors(take.Path()), QByteArray());
    QVERIFY2(SecondsIn(take.Path()) >= before - 0.1, take.Text());
}

QTEST_GUILESS_MAIN(ToolEndTest)
#include "tool_end_test.moc"
