#include "tests/support/child_processes.h"
#include "tests/support/keyboard.h"
#include "tool/record/early_keys.h"
#include "tool/record/end_signal.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// Whether this process has children, including unreaped ones.
bool HasChildren()
{
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// The only child of a process, or 0.
pid_t ChildOf(pid_t parent)
{
    return ChildrenOf(parent).value(0);
}

// The process that passes the keys on, or 0.
pid_t Passer()
{
    const pid_t guard = ChildOf(getpid());
    return guard > 0 ? ChildOf(guard) : 0;
}

// Whether SIGHUP is in this signal set of the process, named as in /proc.
bool HangUpIn(pid_t process, const QByteArray& set)
{
    QFile status(QString("/proc/%1/status").arg(process));
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    return text.mid(text.indexOf(set) + set.size()).trimmed().left(16).toULongLong(nullptr, 16) & 1;
}

void BlockHangUp(int how)
{
    sigset_t hangUp;
    sigemptyset(&hangUp);
    sigaddset(&hangUp, SIGHUP);
    sigprocmask(how, &hangUp, nullptr);
}

// Whether the process that passes the keys has the file open.
bool PasserHasOpen(const QString& path)
{
    const QString folder = QString("/proc/%1/fd").arg(Passer());
    const QStringList files = QDir(folder).entryList(QDir::Files | QDir::System);
    return std::any_of(files.begin(), files.end(), [&](const QString& file) {
        return QFile::symLinkTarget(folder + '/' + file) == path;
    });
}

// The file ffmpeg is going to write.
class Recording
{
public:
    std::string Path() const { return Name("recording.mp4").toStdString(); }
    QString Name(const char* name) const { return m_folder.filePath(name); }
    void Begin(const char* name = "recording.mp4") const
    {
        QFile file(Name(name));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("ftyp") == 4);
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

class ToolEarlyKeysTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    // Must run before the signal is reset, or an ended process would stay a zombie.
    void cleanup() { QTRY_VERIFY2(!HasChildren(), "the holder has not ended"); }
    void keysComeWhenTheFileHasBegun();
    void noKeyIsSeenBefore();
    void anEmptyFileHasNotBegun();
    void aMovedFileIsFollowed();
    void keysComeAtLastWithoutAFile();
    void laterKeysComeAtOnce();
    void endOfTheKeyboardCountsAsQuit();
    void endOfTheKeyboardBeforeThePictureIsHeldToo();
    void theHolderEndsWhenNobodyReads();
    void theHolderEndsBeforeThePictureToo();
    void signalsCountAsQuit_data();
    void signalsCountAsQuit();
    void hangUpThatIsIgnoredStaysIgnored();
    void killedHolderIsReplaced_data();
    void killedHolderIsReplaced();
    void nothingIsHeldOfAnAnswerAboutAnExistingFile();
    void whatIsNoPipeIsLeftAlone();
};

// The state when `tool` starts, except that SIGHUP stays blocked: unblocked in this thread alone,
// it would be delivered to QtTest's watchdog thread.
void ToolEarlyKeysTest::init()
{
    std::signal(SIGCHLD, SIG_DFL);
    std::signal(SIGPIPE, SIG_IGN); // a write without reader must fail the test, not kill it
    std::signal(SIGHUP, SIG_IGN);  // discards a pending one
    std::signal(SIGHUP, SIG_DFL);
    BlockHangUp(SIG_BLOCK);
}

void ToolEarlyKeysTest::keysComeWhenTheFileHasBegun()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY(keyboard.Type("q\r"));
    QVERIFY(keyboard.Type("\n"));
    recording.Begin();
    QCOMPARE(keyboard.ReadAll(3), QByteArray("q\r\n"));
}

// ffmpeg can look at any moment. The recorder types as soon as ffmpeg has printed something.
void ToolEarlyKeysTest::noKeyIsSeenBefore()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    constexpr int times = 1000;
    for (int i = 0; i < times; ++i) {
        QVERIFY(keyboard.Type("q"));
        QVERIFY2(!keyboard.HasKey(), qPrintable(QString("key %1 is seen").arg(i + 1)));
    }
    recording.Begin();
    QCOMPARE(keyboard.ReadAll(times), QByteArray(times, 'q'));
}

void ToolEarlyKeysTest::anEmptyFileHasNotBegun()
{
    Keyboard keyboard;
    const Recording recording;
    QVERIFY(QFile(QString::fromStdString(recording.Path())).open(QIODevice::WriteOnly));
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    // If the first key were not held, it would still be there when the second one is read.
    for (const char* key : {"q", "r"}) {
        QVERIFY(keyboard.Type(key));
        QTRY_COMPARE(keyboard.Untaken(), 0);
    }
    QVERIFY2(!keyboard.HasKey(), "the key is not held");
    recording.Begin();
    QCOMPARE(keyboard.ReadAll(2), QByteArray("qr"));
}

void ToolEarlyKeysTest::aMovedFileIsFollowed()
{
    Keyboard keyboard;
    const Recording recording;
    QVERIFY(QFile(recording.Name("recording.mp4")).open(QIODevice::WriteOnly));
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY(keyboard.Type("q"));
    QTRY_VERIFY2(PasserHasOpen(recording.Name("recording.mp4")), "the file is not looked at");
    QVERIFY(QFile::rename(recording.Name("recording.mp4"), recording.Name("moved.mp4")));
    recording.Begin("moved.mp4");
    QCOMPARE(keyboard.Read(), QByteArray("q"));
}

void ToolEarlyKeysTest::keysComeAtLastWithoutAFile()
{
    Keyboard keyboard;
    QElapsedTimer time;
    time.start();
    tool::HoldEarlyKeys(keyboard.Input(), Recording().Path(), 500ms);
    QVERIFY(keyboard.Type("q"));
    QCOMPARE(keyboard.Read(), QByteArray("q"));
    QVERIFY2(time.elapsed() >= 450, qPrintable(QString("after %1 ms").arg(time.elapsed())));
}

void ToolEarlyKeysTest::laterKeysComeAtOnce()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    recording.Begin();
    for (const char* keys : {"1", "q\r\n", "2"}) {
        QVERIFY(keyboard.Type(keys));
        QCOMPARE(keyboard.Read(), QByteArray(keys));
    }
}

// The recorder has died, so nobody can stop the recording any more.
void ToolEarlyKeysTest::endOfTheKeyboardCountsAsQuit()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY2(HasChildren(), "nobody holds the keys");
    recording.Begin();
    QVERIFY(keyboard.Type("1"));
    QCOMPARE(keyboard.Read(), QByteArray("1"));
    keyboard.StopTyping();
    QCOMPARE(keyboard.Read(), QByteArray("q"));
    QCOMPARE(keyboard.Read(), QByteArray());
    QTRY_VERIFY2(!HasChildren(), "it stays, or nobody waits for its end");
}

void ToolEarlyKeysTest::endOfTheKeyboardBeforeThePictureIsHeldToo()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY(keyboard.Type("1"));
    QTRY_COMPARE(keyboard.Untaken(), 0);
    QVERIFY2(!keyboard.HasKey(), "the key is not held");
    keyboard.StopTyping();
    recording.Begin();
    QCOMPARE(keyboard.ReadAll(2), QByteArray("1q"));
    QCOMPARE(keyboard.Read(), QByteArray());
}

void ToolEarlyKeysTest::theHolderEndsWhenNobodyReads()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    recording.Begin();
    QVERIFY(keyboard.Type("1"));
    QCOMPARE(keyboard.Read(), QByteArray("1"));
    keyboard.StopReading();
    QTRY_VERIFY2(!HasChildren(), "it stays");
}

void ToolEarlyKeysTest::theHolderEndsBeforeThePictureToo()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY2(HasChildren(), "nobody holds the keys");
    keyboard.StopReading();
    QTRY_VERIFY2(!HasChildren(), "it stays");
}

void ToolEarlyKeysTest::signalsCountAsQuit_data()
{
    QTest::addColumn<QByteArray>("receiver");
    QTest::addColumn<int>("signal");
    QTest::newRow("ffmpeg's terminal is closed") << QByteArray("ffmpeg") << SIGHUP;
    for (const char* receiver : {"guard", "passer"}) {
        QTest::addRow("%s is terminated", receiver) << QByteArray(receiver) << SIGTERM;
        QTest::addRow("%s's terminal is closed", receiver) << QByteArray(receiver) << SIGHUP;
    }
}

// This process acts as ffmpeg.
void ToolEarlyKeysTest::signalsCountAsQuit()
{
    QFETCH(QByteArray, receiver);
    QFETCH(int, signal);
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    tool::KeepEndSignals();
    QTRY_VERIFY2(Passer() > 0, "nobody passes the keys");
    recording.Begin();
    QVERIFY(keyboard.Type("1"));
    QCOMPARE(keyboard.Read(), QByteArray("1"));
    const pid_t process = receiver == "ffmpeg"  ? getpid()
                          : receiver == "guard" ? ChildOf(getpid())
                                                : Passer();
    QCOMPARE(kill(process, signal), 0);
    QCOMPARE(keyboard.Read(), QByteArray("q"));
    // Once, however many signals arrive.
    kill(ChildOf(getpid()), SIGTERM);
    QVERIFY(keyboard.Type("2"));
    QCOMPARE(keyboard.Read(), QByteArray("2"));
}

// The state under nohup.
void ToolEarlyKeysTest::hangUpThatIsIgnoredStaysIgnored()
{
    std::signal(SIGHUP, SIG_IGN);
    BlockHangUp(SIG_UNBLOCK);
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    tool::KeepEndSignals();
    QTRY_VERIFY2(Passer() > 0, "nobody passes the keys");
    recording.Begin();
    QVERIFY(keyboard.Type("1")); // once it passes keys, its signals are set up
    QCOMPARE(keyboard.Read(), QByteArray("1"));
    for (const pid_t process : {getpid(), ChildOf(getpid()), Passer()}) {
        QVERIFY2(HangUpIn(process, "SigIgn:"), "it is not ignored any more");
        QVERIFY2(!HangUpIn(process, "SigBlk:"), "it waits");
    }
}

void ToolEarlyKeysTest::killedHolderIsReplaced_data()
{
    QTest::addColumn<bool>("guard");
    QTest::newRow("the one that passes") << false;
    QTest::newRow("the one that guards it") << true;
}

void ToolEarlyKeysTest::killedHolderIsReplaced()
{
    QFETCH(bool, guard);
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QTRY_VERIFY2(Passer() > 0, "nobody passes the keys");
    recording.Begin();
    const pid_t killed = guard ? ChildOf(getpid()) : Passer();
    QCOMPARE(kill(killed, SIGKILL), 0);
    QTRY_VERIFY2(kill(killed, 0) != 0, "it lives on");
    for (const char* keys : {"1", "q\r\n"}) {
        QVERIFY(keyboard.Type(keys));
        QCOMPARE(keyboard.Read(), QByteArray(keys));
    }
}

void ToolEarlyKeysTest::nothingIsHeldOfAnAnswerAboutAnExistingFile()
{
    Keyboard keyboard;
    const Recording recording;
    recording.Begin();
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY2(!HasChildren(), "somebody holds the keys");
    QVERIFY(keyboard.Type("n"));
    QCOMPARE(keyboard.Read(), QByteArray("n"));
}

void ToolEarlyKeysTest::whatIsNoPipeIsLeftAlone()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("keys"));
    QVERIFY(file.open(QIODevice::ReadWrite) && file.write("q\r\n") == 3 && file.seek(0));
    tool::HoldEarlyKeys(file.handle(), Recording().Path(), 1ms);
    tool::HoldEarlyKeys(-1, Recording().Path(), 1ms);
    QCOMPARE(file.readAll(), QByteArray("q\r\n"));
}

int main(int count, char** values)
{
    BlockHangUp(SIG_BLOCK); // inherited by every thread that QtTest starts
    ToolEarlyKeysTest test;
    return QTest::qExec(&test, count, values);
}

#include "tool_early_keys_test.moc"
