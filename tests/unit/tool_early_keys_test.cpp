#include "tool/early_keys.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <csignal>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

using namespace std::chrono_literals;

namespace {

// A pipe to type keys into. Input() is the descriptor ffmpeg reads: the read end, or what replaced
// it.
class Keyboard
{
public:
    Keyboard() { Q_UNUSED(pipe(m_ends.data())); }
    Keyboard(const Keyboard&) = delete;
    Keyboard& operator=(const Keyboard&) = delete;
    ~Keyboard()
    {
        StopReading();
        StopTyping();
    }

    int Input() const { return m_ends[0]; }
    bool Type(const QByteArray& keys)
    {
        return write(m_ends[1], keys.data(), static_cast<size_t>(keys.size())) == keys.size();
    }
    void StopTyping() { Close(m_ends[1]); }
    void StopReading() { Close(m_ends[0]); }

    // Bytes typed but not read yet.
    int Untaken() const
    {
        int bytes = -1;
        ioctl(m_ends[1], FIONREAD, &bytes);
        return bytes;
    }

    // Whether ffmpeg would find a key if it looked now.
    bool HasKey() const { return Read(0ms) != "nothing"; }

    // The next key, or "nothing" after a timeout.
    QByteArray Read(std::chrono::milliseconds patience = 10s) const
    {
        pollfd keys{m_ends[0], POLLIN, 0};
        std::array<char, 100> text{};
        return poll(&keys, 1, static_cast<int>(patience.count())) == 1
                   ? QByteArray(text.data(),
                                static_cast<int>(read(m_ends[0], text.data(), text.size())))
                   : QByteArray("nothing");
    }

    // Reads this many keys in any number of chunks, or fewer after a timeout.
    QByteArray ReadAll(int count) const
    {
        QByteArray keys;
        while (keys.size() < count) {
            const QByteArray more = Read();
            if (more == "nothing" || more.isEmpty()) {
                break;
            }
            keys += more;
        }
        return keys;
    }

private:
    static void Close(int& end) { close(std::exchange(end, -1)); }

    std::array<int, 2> m_ends{};
};

// Whether this process has children, including unreaped ones.
bool HasChildren()
{
    siginfo_t info{};
    return waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) == 0;
}

// Whether a child of this process has the file open.
bool ChildHasOpen(const QString& path)
{
    QFile children(QString("/proc/self/task/%1/children").arg(getpid()));
    if (!children.open(QIODevice::ReadOnly)) {
        return false;
    }
    for (const QByteArray& child : children.readAll().simplified().split(' ')) {
        const QString folder = "/proc/" + QString(child) + "/fd";
        for (const QString& file : QDir(folder).entryList(QDir::Files | QDir::System)) {
            if (QFile::symLinkTarget(folder + '/' + file) == path) {
                return true;
            }
        }
    }
    return false;
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
    void init() { std::signal(SIGCHLD, SIG_DFL); } // the state when `tool` starts
    // Must run before the signal is reset, or an ended process would stay a zombie.
    void cleanup() { QTRY_VERIFY2(!HasChildren(), "the holder has not ended"); }
    void keysComeWhenTheFileHasBegun();
    void noKeyIsSeenBefore();
    void anEmptyFileHasNotBegun();
    void aMovedFileIsFollowed();
    void keysComeAtLastWithoutAFile();
    void laterKeysComeAtOnce();
    void theHolderEndsWithTheKeyboard();
    void theHolderEndsWhenNobodyReads();
    void theEndOfTheKeyboardComesToo();
    void nothingIsHeldOfAnAnswerAboutAnExistingFile();
    void whatIsNoPipeIsLeftAlone();
};

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
    QTRY_VERIFY2(ChildHasOpen(recording.Name("recording.mp4")), "the file is not looked at");
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

void ToolEarlyKeysTest::theHolderEndsWithTheKeyboard()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY2(HasChildren(), "nobody holds the keys");
    recording.Begin();
    keyboard.StopTyping();
    QTRY_VERIFY2(!HasChildren(), "it stays, or nobody waits for its end");
}

void ToolEarlyKeysTest::theHolderEndsWhenNobodyReads()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    recording.Begin();
    keyboard.StopReading();
    QVERIFY(keyboard.Type("q"));
    QTRY_VERIFY2(!HasChildren(), "it stays");
}

void ToolEarlyKeysTest::theEndOfTheKeyboardComesToo()
{
    Keyboard keyboard;
    const Recording recording;
    tool::HoldEarlyKeys(keyboard.Input(), recording.Path(), 1min);
    QVERIFY(keyboard.Type("q"));
    keyboard.StopTyping();
    recording.Begin();
    QCOMPARE(keyboard.Read(), QByteArray("q"));
    QCOMPARE(keyboard.Read(), QByteArray());
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

QTEST_APPLESS_MAIN(ToolEarlyKeysTest)
#include "tool_early_keys_test.moc"
