// Programs started as child processes, and signals as events.
#include "tests/support/child_processes.h"
#include "tool/system/pipe.h"
#include "tool/system/process.h"
#include "tool/system/signals.h"

#include <QTest>

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using tool::Process;
using tool::Program;
using tool::Signals;

namespace {

const Program kSleep{"/bin/sleep", {"60"}};

Program Shell(const std::string& script)
{
    return {"/bin/sh", {"-c", script}};
}

QByteArray ReadAll(const tool::Descriptor& pipe)
{
    QByteArray all;
    std::array<char, 4096> piece{};
    for (ssize_t count = 0; (count = read(pipe.Number(), piece.data(), piece.size())) > 0;) {
        all.append(piece.data(), count);
    }
    return all;
}

// What the script prints, with the pipe in which it does.
QByteArray Printed(Program program)
{
    auto pipe = tool::MakePipe();
    program.output = pipe->write.Number();
    auto process = Process::Start(program);
    pipe->write.Close();
    QByteArray text = process ? ReadAll(pipe->read) : "not started";
    if (process) {
        process->Wait();
    }
    return text;
}

} // namespace

class ToolProcessTest : public QObject
{
    Q_OBJECT

private slots:
    void endIsTheExitCodeOrTheSignal_data();
    void endIsTheExitCodeOrTheSignal();
    void programThatCannotRunIsTold();
    void signalReachesItUntilItsEndIsSeen();
    void standardStreamsAreThoseNamed();
    void ownVariablesComeBesideTheInherited();
    void onlyNamedDescriptorsAreInherited();
    void onlyNamedSignalsAreBlocked();
    void ignoredSignalsStayIgnored();
    void groupIsItsOwn();
    void programEndsWithItsParent();
    void endOfAParentWithThreadsIsToldOnce();
    void signalsAreReadInOrder();
    void ignoredSignalIsNotCaught();
    void signalsReachNoThreadThatIsKeptFromThem();
};

void ToolProcessTest::endIsTheExitCodeOrTheSignal_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("code");
    QTest::newRow("well") << QByteArray("exit 0") << 0;
    QTest::newRow("with a code") << QByteArray("exit 255") << 255;
    QTest::newRow("killed") << QByteArray("kill -9 $$") << 128 + SIGKILL;
}

void ToolProcessTest::endIsTheExitCodeOrTheSignal()
{
    QFETCH(QByteArray, script);
    QFETCH(int, code);
    auto waited = Process::Start(Shell(script.toStdString()));
    QVERIFY(waited.has_value());
    QCOMPARE(waited->Wait(), code);
    QCOMPARE(waited->Wait(), code);
    auto looked = Process::Start(Shell(script.toStdString()));
    QVERIFY(looked.has_value());
    QTRY_VERIFY(looked->ExitCode().has_value());
    QCOMPARE(*looked->ExitCode(), code);
}

void ToolProcessTest::programThatCannotRunIsTold()
{
    QVERIFY(!Process::Start({"/nonexistent/program"}));
    QCOMPARE(errno, ENOENT);
    QVERIFY2(waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD, "a child is left");
}

void ToolProcessTest::signalReachesItUntilItsEndIsSeen()
{
    auto process = Process::Start(kSleep);
    QVERIFY(process.has_value());
    QVERIFY(!process->ExitCode());
    process->Signal(SIGTERM);
    QCOMPARE(process->Wait(), 128 + SIGTERM);
    process->Signal(SIGKILL); // must not reach whoever has its number now
    QCOMPARE(process->Wait(), 128 + SIGTERM);
}

void ToolProcessTest::standardStreamsAreThoseNamed()
{
    Program program = Shell("read line; echo \"got $line\"; echo aside >&2");
    auto keys = tool::MakePipe();
    QCOMPARE(write(keys->write.Number(), "word\n", 5), ssize_t{5});
    program.input = keys->read.Number();
    program.error = Program::nowhere;
    QCOMPARE(Printed(program), QByteArray("got word\n"));
    program.input = Program::nowhere;
    QCOMPARE(Printed(program), QByteArray("got \n"));
}

void ToolProcessTest::ownVariablesComeBesideTheInherited()
{
    qputenv("LUMENFOLD_INHERITED", "old");
    qputenv("LUMENFOLD_REPLACED", "old");
    Program program = Shell("echo $LUMENFOLD_INHERITED $LUMENFOLD_REPLACED $LUMENFOLD_ADDED");
    program.variables = {"LUMENFOLD_REPLACED=new", "LUMENFOLD_ADDED=new"};
    QCOMPARE(Printed(program), QByteArray("old new new\n"));
    QCOMPARE(qgetenv("LUMENFOLD_REPLACED"), QByteArray("old"));
}

void ToolProcessTest::onlyNamedDescriptorsAreInherited()
{
    auto kept = tool::MakePipe();
    auto other = tool::MakePipe();
    Program program{"/bin/ls", {"/proc/self/fd"}};
    const QByteArray without = Printed(program);
    program.inherited = {kept->read.Number()};
    const QByteArray with = Printed(program);
    // ls has one more open while it lists them.
    QCOMPARE(without.split('\n').size(), 5);
    QCOMPARE(with.split('\n').size(), 6);
    QVERIFY2(with.split('\n').contains(QByteArray::number(kept->read.Number())), with);
}

void ToolProcessTest::onlyNamedSignalsAreBlocked()
{
    Program program{"/bin/grep", {"SigBlk", "/proc/self/status"}};
    const tool::SignalBlock all;
    QCOMPARE(Printed(program).simplified(), QByteArray("SigBlk: 0000000000000000"));
    program.blockedSignals = {SIGHUP};
    QCOMPARE(Printed(program).simplified(), QByteArray("SigBlk: 0000000000000001"));
}

void ToolProcessTest::ignoredSignalsStayIgnored()
{
    tool::IgnoreSignals({SIGUSR1});
    auto process = Process::Start(Shell("kill -USR1 $$; exit 7"));
    std::signal(SIGUSR1, SIG_DFL);
    QCOMPARE(process->Wait(), 7);
}

void ToolProcessTest::groupIsItsOwn()
{
    Program program = kSleep;
    program.ownGroup = true;
    auto process = Process::Start(program);
    QVERIFY(process.has_value());
    QCOMPARE(getpgid(process->Id()), process->Id());
    QCOMPARE(kill(-process->Id(), SIGKILL), 0);
    QCOMPARE(process->Wait(), 128 + SIGKILL);
}

void ToolProcessTest::programEndsWithItsParent()
{
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); // orphans become children of this process
    auto alive = tool::MakePipe();                 // ends with its last writer
    const pid_t parent = fork();
    if (parent == 0) {
        Program program = kSleep;
        program.input = alive->write.Number();
        program.parentEndSignal = SIGTERM;
        Process::Start(program);
        [[maybe_unused]] const ssize_t begun = write(alive->write.Number(), "x", 1);
        pause();
        _exit(0);
    }
    alive->write.Close();
    char begun = 0;
    QCOMPARE(read(alive->read.Number(), &begun, 1), ssize_t{1});
    QCOMPARE(kill(parent, SIGKILL), 0);
    pollfd end{alive->read.Number(), 0, 0};
    QVERIFY2(poll(&end, 1, 10000) == 1, "the program goes on");
    QVERIFY(AllChildrenEnd());
}

// A program that gets the signal again while it is finishing its file gives up.
void ToolProcessTest::endOfAParentWithThreadsIsToldOnce()
{
    QCOMPARE(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    for (int i = 0; i < 10; ++i) {
        auto told = tool::MakePipe();
        const pid_t parent = fork();
        if (parent == 0) {
            Program program{"/usr/bin/perl",
                            {"-e", "$| = 1; $SIG{TERM} = sub { print 'T' }; print 'R';"
                                   "select(undef, undef, undef, 0.1) until $n++ == 3"}};
            program.output = told->write.Number();
            program.parentEndSignal = SIGTERM;
            Process::Start(program);
            const std::array<std::thread, 3> threads{std::thread(pause), std::thread(pause),
                                                     std::thread(pause)};
            pause();
        }
        told->write.Close();
        char ready = 0;
        QCOMPARE(read(told->read.Number(), &ready, 1), ssize_t{1});
        QCOMPARE(kill(parent, SIGKILL), 0);
        QCOMPARE(ReadAll(told->read), QByteArray("T"));
    }
    QVERIFY(AllChildrenEnd());
}

void ToolProcessTest::signalsAreReadInOrder()
{
    Signals caught({SIGTERM, SIGHUP, SIGCHLD});
    QVERIFY(!caught.Next());
    pollfd ready{caught.Number(), POLLIN, 0};
    QCOMPARE(poll(&ready, 1, 0), 0);
    for (const int number : {SIGHUP, SIGTERM}) {
        QCOMPARE(kill(getpid(), number), 0);
        QTRY_VERIFY(poll(&ready, 1, 0) == 1);
        QCOMPARE(caught.Next(), std::optional(number));
    }
    auto process = Process::Start(Shell("exit 3"));
    QTRY_VERIFY(poll(&ready, 1, 0) == 1);
    QCOMPARE(caught.Next(), std::optional(SIGCHLD));
    QCOMPARE(process->ExitCode(), std::optional(3));
    QVERIFY(!caught.Next());
}

// As under nohup.
void ToolProcessTest::ignoredSignalIsNotCaught()
{
    tool::IgnoreSignals({SIGHUP, SIGCHLD});
    {
        Signals caught({SIGHUP, SIGCHLD});
        QCOMPARE(kill(getpid(), SIGHUP), 0);
        QVERIFY(!caught.Next());
        auto process = Process::Start(Shell("exit 3"));
        QCOMPARE(process->Wait(), 3); // SIGCHLD is, or there would be no exit code
    }
    std::signal(SIGHUP, SIG_DFL);
}

void ToolProcessTest::signalsReachNoThreadThatIsKeptFromThem()
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    {
        const tool::SignalBlock block;
        sigset_t inside;
        pthread_sigmask(SIG_SETMASK, nullptr, &inside);
        QCOMPARE(sigismember(&inside, SIGTERM), 1);
    }
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    QCOMPARE(sigismember(&after, SIGTERM), sigismember(&before, SIGTERM));
}

QTEST_GUILESS_MAIN(ToolProcessTest)
#include "tool_process_test.moc"
