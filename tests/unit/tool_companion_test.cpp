// The processes beside ffmpeg. A process forked by the test acts as ffmpeg. They report through
// shared memory.
#include "tests/support/child_processes.h"
#include "tool/record/companion.h"

#include <QFile>
#include <QTest>

#include <array>
#include <atomic>
#include <csignal>
#include <fcntl.h>
#include <functional>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Shared
{
    std::atomic<pid_t> companion = 0;
    std::atomic<bool> done = false;
    std::atomic<int> received = 0; // signals sent to "ffmpeg"
    std::atomic<int> handled = 0;  // signals handled by the companion
    std::array<int, 2> kept{-1, -1};
    std::array<bool, 3> standardIsNull{};
    ino_t keptFile = 0;
    int openFiles = 0;
};

Shared* g_shared = nullptr;

// A process that exits if this one is killed.
pid_t Fork(const std::function<void()>& run)
{
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        run();
        _exit(0);
    }
    return child;
}

void WaitForSignals()
{
    while (true) {
        pause();
    }
}

// A companion that reports its process id and then waits.
void BeginWaiting(const std::vector<int>&)
{
    g_shared->companion = getpid();
    while (true) {
        pause();
        ++g_shared->handled;
    }
}

bool Exists(pid_t process)
{
    return kill(process, 0) == 0;
}

// A process's signal set with this name in /proc.
quint64 Signals(pid_t process, const QByteArray& set)
{
    QFile status(QString("/proc/%1/status").arg(process));
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    return text.mid(text.indexOf(set) + set.size()).trimmed().left(16).toULongLong(nullptr, 16);
}

bool Has(quint64 set, int signal)
{
    return (set >> (signal - 1) & 1) != 0;
}

} // namespace

class ToolCompanionTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void endsWithFfmpeg();
    void isNotStartedForFfmpegThatHasEnded();
    void hasNothingOpenButWhatItKeeps();
    void leavesNoExitCode();
    void signalsOfATerminalDoNotReachIt();
    void requestToEndReachesFfmpeg_data();
    void requestToEndReachesFfmpeg();
    void requestToEndOfAnOrphanReachesNobody();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    void StartFfmpeg(const std::function<void(const std::vector<int>&)>& run = BeginWaiting);

    pid_t m_ffmpeg = 0;
};

void ToolCompanionTest::initTestCase()
{
    g_shared = MakeShared<Shared>();
    QVERIFY(g_shared != nullptr);
    // Orphans become children of this process, which can then wait for them.
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
}

void ToolCompanionTest::init()
{
    new (g_shared) Shared;
    m_ffmpeg = 0;
}

void ToolCompanionTest::cleanup()
{
    for (const pid_t process : {m_ffmpeg, g_shared->companion.load()}) {
        if (process > 0) {
            kill(process, SIGKILL);
            waitpid(process, nullptr, 0);
        }
    }
}

// "ffmpeg" starts a companion, counts the signals it gets, and runs until it is killed.
void ToolCompanionTest::StartFfmpeg(const std::function<void(const std::vector<int>&)>& run)
{
    m_ffmpeg = Fork([&] {
        std::signal(SIGHUP, [](int) { ++g_shared->received; });
        tool::StartCompanion({}, run);
        WaitForSignals();
    });
    QVERIFY(m_ffmpeg > 0);
    QTRY_VERIFY2(g_shared->companion > 0, "the companion does not start");
}

void ToolCompanionTest::endsWithFfmpeg()
{
    StartFfmpeg();
    QCOMPARE(kill(m_ffmpeg, SIGKILL), 0);
    QCOMPARE(waitpid(m_ffmpeg, nullptr, 0), m_ffmpeg);
    m_ffmpeg = 0;
    QVERIFY2(AllChildrenEnd(), "the companion stays");
    g_shared->companion = 0;
}

// The only moment without notification: before it has requested one.
void ToolCompanionTest::isNotStartedForFfmpegThatHasEnded()
{
    for (int i = 0; i < 50; ++i) {
        const pid_t ffmpeg = Fork([] { tool::StartCompanion({}, BeginWaiting); });
        QVERIFY(ffmpeg > 0);
        QVERIFY2(AllChildrenEnd(), "the companion stays");
        g_shared->companion = 0;
    }
}

void ToolCompanionTest::hasNothingOpenButWhatItKeeps()
{
    std::array<int, 2> ends{};
    QCOMPARE(pipe(ends.data()), 0);
    QFile other(QCoreApplication::applicationFilePath());
    QVERIFY(other.open(QIODevice::ReadOnly));
    struct stat status = {};
    QCOMPARE(fstat(ends[1], &status), 0);
    m_ffmpeg = Fork([&] {
        tool::StartCompanion({ends[1], ends[0]}, [&](const std::vector<int>& kept) {
            g_shared->kept = {kept.at(0), kept.at(1)};
            struct stat file = {};
            struct stat null = {};
            stat("/dev/null", &null);
            for (int i = 0; i < 3; ++i) {
                g_shared->standardIsNull.at(static_cast<size_t>(i)) =
                    fstat(i, &file) == 0 && file.st_rdev == null.st_rdev;
            }
            fstat(kept[0], &file);
            g_shared->keptFile = file.st_ino;
            for (int i = 0; i < 1024; ++i) {
                g_shared->openFiles += fcntl(i, F_GETFD) >= 0 ? 1 : 0;
            }
            // Checks the order: what is written to the first comes out of the second.
            char letter = 'x';
            g_shared->done = write(kept[0], &letter, 1) == 1 && read(kept[1], &letter, 1) == 1;
            BeginWaiting(kept);
        });
        WaitForSignals();
    });
    QTRY_VERIFY2(g_shared->companion > 0, "the companion does not start");
    QVERIFY2(g_shared->done, "what is kept comes in another order");
    QCOMPARE(g_shared->keptFile, status.st_ino);
    QCOMPARE(g_shared->openFiles, 5);
    QVERIFY(g_shared->kept[0] > STDERR_FILENO && g_shared->kept[1] > STDERR_FILENO);
    for (const bool isNull : g_shared->standardIsNull) {
        QVERIFY2(isNull, "a standard stream is still ffmpeg's");
    }
    close(ends[0]);
    close(ends[1]);
}

// ffmpeg would never wait for it.
void ToolCompanionTest::leavesNoExitCode()
{
    m_ffmpeg = Fork([] {
        tool::StartCompanion({}, [](const auto&) {});
        g_shared->done = waitpid(-1, nullptr, 0) < 0 && errno == ECHILD;
        WaitForSignals();
    });
    QTRY_VERIFY2(g_shared->done, "an ended companion stays, or does not end");
}

void ToolCompanionTest::signalsOfATerminalDoNotReachIt()
{
    StartFfmpeg();
    const quint64 ignored = Signals(g_shared->companion, "SigIgn:");
    for (const int signal : {SIGINT, SIGQUIT, SIGPIPE}) {
        QVERIFY2(Has(ignored, signal), strsignal(signal));
    }
}

void ToolCompanionTest::requestToEndReachesFfmpeg_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("terminal closed") << SIGHUP;
}

void ToolCompanionTest::requestToEndReachesFfmpeg()
{
    QFETCH(int, signal);
    StartFfmpeg();
    QCOMPARE(kill(g_shared->companion, signal), 0);
    QTRY_COMPARE(g_shared->received.load(), 1);
    QVERIFY2(Exists(g_shared->companion), "the companion has ended");
}

// Its parent is then an unrelated process.
void ToolCompanionTest::requestToEndOfAnOrphanReachesNobody()
{
    StartFfmpeg([](const std::vector<int>& kept) {
        prctl(PR_SET_PDEATHSIG, 0);
        BeginWaiting(kept);
    });
    QCOMPARE(kill(m_ffmpeg, SIGKILL), 0);
    QCOMPARE(waitpid(m_ffmpeg, nullptr, 0), m_ffmpeg);
    m_ffmpeg = 0;
    static std::atomic<int> received = 0; // received by the new parent, this process
    std::signal(SIGHUP, [](int) { ++received; });
    QCOMPARE(kill(g_shared->companion, SIGTERM), 0);
    QTRY_COMPARE(g_shared->handled.load(), 1);
    QCOMPARE(kill(g_shared->companion, SIGKILL), 0);
    QCOMPARE(waitpid(g_shared->companion, nullptr, 0), g_shared->companion.load());
    g_shared->companion = 0;
    QCOMPARE(received.load(), 0);
    std::signal(SIGHUP, SIG_DFL);
}

QTEST_GUILESS_MAIN(ToolCompanionTest)
#include "tool_companion_test.moc"
