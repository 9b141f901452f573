// The supervisor, with a program that prints its input in place of ffmpeg.
#include "tests/support/child_processes.h"
#include "tests/support/keyboard.h"
#include "tool/record/supervisor.h"
#include "tool/system/pipe.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <optional>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;
using tool::Process;
using tool::Program;
using tool::RecordingFile;
using tool::RecordingTime;

namespace {

// A supervised recording. What "ffmpeg" gets as keys can be read.
class Supervision
{
public:
    struct Options
    {
        bool grabsItself = false;
        bool hasFile = true;
        std::chrono::milliseconds patience = 1min;
        int keyboard = -1; // instead of the one of its own
        std::chrono::milliseconds firstPicture{0};
    };

    explicit Supervision(Options options) : m_options(options)
    {
        const QByteArray path = QFile::encodeName(m_folder.filePath("r.mp4"));
        m_file = RecordingFile::Create(path.toStdString());
        auto keys = tool::MakePipe();
        auto printed = tool::MakePipe();
        Program program{"/bin/cat"};
        program.input = keys->read.Number();
        program.output = printed->write.Number();
        program.blockedSignals = {SIGHUP};
        m_ffmpeg = Process::Start(program);
        m_printed = std::move(printed->read);
        m_caught.emplace(std::initializer_list<int>{SIGTERM, SIGINT, SIGHUP, SIGCHLD});
        m_thread = std::thread([this, pipe = std::move(keys->write)]() mutable {
            tool::Supervisor supervisor(
                {*m_ffmpeg, std::move(pipe), m_options.hasFile ? &*m_file : nullptr,
                 m_options.grabsItself, m_options.patience, m_options.firstPicture},
                m_options.keyboard >= 0 ? m_options.keyboard : m_keyboard.Input(), *m_caught,
                m_time);
            m_nCode = supervisor.Run();
            m_reason = supervisor.Reason();
        });
    }
    Supervision(const Supervision&) = delete;
    Supervision& operator=(const Supervision&) = delete;
    ~Supervision()
    {
        kill(m_ffmpeg->Id(), SIGKILL);
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    Keyboard& Keys() { return m_keyboard; }
    pid_t Ffmpeg() const { return m_ffmpeg->Id(); }
    bool HasEnded() const { return m_time.End().has_value(); }
    // The keys that have reached ffmpeg, as far as they come within this time.
    QByteArray Typed(int count, std::chrono::milliseconds patience = 10s) const
    {
        QByteArray all;
        pollfd ready{m_printed.Number(), POLLIN, 0};
        while (all.size() < count && poll(&ready, 1, static_cast<int>(patience.count())) == 1) {
            QByteArray piece(count - static_cast<int>(all.size()), '\0');
            const ssize_t got =
                read(m_printed.Number(), piece.data(), static_cast<size_t>(piece.size()));
            if (got <= 0) {
                break;
            }
            all += piece.left(got);
        }
        return all;
    }
    void FillFile() const { QCOMPARE(write(m_file->Number(), "ftyp", 4), ssize_t{4}); }
    int WaitForEnd()
    {
        m_thread.join();
        return m_nCode;
    }

    tool::Ending Reason() const { return m_reason; } // after the end

private:
    Options m_options;
    QTemporaryDir m_folder;
    Keyboard m_keyboard;
    RecordingTime m_time;
    std::optional<RecordingFile> m_file;
    std::optional<Process> m_ffmpeg;
    tool::Descriptor m_printed;
    std::optional<tool::Signals> m_caught;
    std::thread m_thread;
    int m_nCode = -1;
    tool::Ending m_reason = tool::Ending::Asked;
};

constexpr auto kAWhile = 400ms; // longer than the supervisor takes to look at everything

} // namespace

class ToolSupervisorTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void quitKeyEndsTheRecordingAndNotFfmpeg();
    void otherKeysReachFfmpeg();
    void quitKeyComesWhenTheFileHasAPicture();
    void quitKeyComesAtOnceWithoutAFileOfOurs();
    void quitKeyComesAtLast_data();
    void quitKeyComesAtLast();
    void ffmpegThatWritesNothingAfterTheKeyIsKilled();
    void endOfTheKeyboardEndsTheRecording();
    void keyboardThatIsNoPipeMayEnd();
    void signalsEndTheRecording_data();
    void signalsEndTheRecording();
    void hangUpThatIsIgnoredDoesNot();
    void hangUpOfFfmpegEndsTheRecording();
    void endOfFfmpegEndsTheRecording();
    void ffmpegWithoutAFirstPictureIsKilled_data();
    void ffmpegWithoutAFirstPictureIsKilled();
    void ffmpegWithAFirstPictureIsNot();
};

void ToolSupervisorTest::init()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGHUP, SIG_DFL);
}

void ToolSupervisorTest::quitKeyEndsTheRecordingAndNotFfmpeg()
{
    Supervision recording({});
    QVERIFY(recording.Keys().Type("q\r\n"));
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QCOMPARE(recording.Typed(3, kAWhile), QByteArray());
}

void ToolSupervisorTest::otherKeysReachFfmpeg()
{
    Supervision recording({});
    for (const char* keys : {"?", "y\n"}) {
        QVERIFY(recording.Keys().Type(keys));
        QCOMPARE(recording.Typed(static_cast<int>(qstrlen(keys))), QByteArray(keys));
    }
    QVERIFY(!recording.HasEnded());
}

// ffmpeg would leave a file that no player opens.
void ToolSupervisorTest::quitKeyComesWhenTheFileHasAPicture()
{
    Supervision recording({.grabsItself = true});
    for (int i = 0; i < 3; ++i) {
        QVERIFY(recording.Keys().Type("q"));
    }
    QCOMPARE(recording.Typed(1, kAWhile), QByteArray());
    QVERIFY(recording.HasEnded());
    recording.FillFile();
    QCOMPARE(recording.Typed(2, kAWhile), QByteArray("q"));
}

void ToolSupervisorTest::quitKeyComesAtOnceWithoutAFileOfOurs()
{
    Supervision recording({.grabsItself = true, .hasFile = false});
    QVERIFY(recording.Keys().Type("q"));
    QCOMPARE(recording.Typed(1), QByteArray("q"));
}

void ToolSupervisorTest::quitKeyComesAtLast_data()
{
    QTest::addColumn<bool>("grabsItself");
    QTest::newRow("to an ffmpeg that does not read its inputs") << false;
    QTest::newRow("to an ffmpeg that gets no picture") << true;
}

void ToolSupervisorTest::quitKeyComesAtLast()
{
    QFETCH(bool, grabsItself);
    QElapsedTimer time;
    time.start();
    Supervision recording({.grabsItself = grabsItself, .patience = 500ms});
    QVERIFY(recording.Keys().Type("q"));
    QCOMPARE(recording.Typed(1), QByteArray("q"));
    QVERIFY2(time.elapsed() >= 500, qPrintable(QString("after %1 ms").arg(time.elapsed())));
}

// It waits for a device that is gone.
void ToolSupervisorTest::ffmpegThatWritesNothingAfterTheKeyIsKilled()
{
    Supervision recording({.grabsItself = true, .patience = 600ms});
    recording.FillFile();
    QVERIFY(recording.Keys().Type("q"));
    QCOMPARE(recording.Typed(1), QByteArray("q"));
    for (int i = 0; i < 4; ++i) {
        QTest::qWait(250);
        QVERIFY2(IsAlive(recording.Ffmpeg()), "it is killed while it writes");
        recording.FillFile();
    }
    QTRY_VERIFY2(!IsAlive(recording.Ffmpeg()), "it stays for ever");
    QCOMPARE(recording.WaitForEnd(), 128 + SIGKILL);
}

// The recorder has died, so nobody can stop the recording any more.
void ToolSupervisorTest::endOfTheKeyboardEndsTheRecording()
{
    Supervision recording({});
    QVERIFY(recording.Keys().Type("1"));
    QCOMPARE(recording.Typed(1), QByteArray("1"));
    QVERIFY(!recording.HasEnded());
    recording.Keys().StopTyping();
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
}

void ToolSupervisorTest::keyboardThatIsNoPipeMayEnd()
{
    const tool::Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    Supervision recording({.keyboard = nothing.Number()});
    QTest::qWait(static_cast<int>(kAWhile.count()));
    QVERIFY2(!recording.HasEnded(), "it ends without being told to");
}

void ToolSupervisorTest::signalsEndTheRecording_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("terminal closed") << SIGHUP;
}

void ToolSupervisorTest::signalsEndTheRecording()
{
    QFETCH(int, signal);
    Supervision recording({});
    QCOMPARE(kill(getpid(), signal), 0);
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QCOMPARE(recording.Typed(1, kAWhile), QByteArray());
}

// As under nohup.
void ToolSupervisorTest::hangUpThatIsIgnoredDoesNot()
{
    std::signal(SIGHUP, SIG_IGN);
    Supervision recording({});
    QCOMPARE(kill(getpid(), SIGHUP), 0);
    QVERIFY(recording.Keys().Type("1"));
    QCOMPARE(recording.Typed(1), QByteArray("1"));
    QVERIFY2(!recording.HasEnded(), "it ends");
}

// It has no effect on ffmpeg itself, which blocks the signal.
void ToolSupervisorTest::hangUpOfFfmpegEndsTheRecording()
{
    Supervision recording({});
    QCOMPARE(kill(recording.Ffmpeg(), SIGHUP), 0);
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QVERIFY2(IsAlive(recording.Ffmpeg()), "ffmpeg is gone");
}

void ToolSupervisorTest::endOfFfmpegEndsTheRecording()
{
    Supervision recording({});
    QElapsedTimer time;
    time.start();
    QCOMPARE(kill(recording.Ffmpeg(), SIGKILL), 0);
    QCOMPARE(recording.WaitForEnd(), 128 + SIGKILL);
    QVERIFY(recording.Reason() == tool::Ending::ByItself);
    QVERIFY(recording.HasEnded());
    QVERIFY2(time.elapsed() < 5000, "it is noticed late");
}

void ToolSupervisorTest::ffmpegWithoutAFirstPictureIsKilled_data()
{
    QTest::addColumn<bool>("asked");
    QTest::newRow("nobody stops the recording") << false;
    QTest::newRow("the user has stopped it") << true;
}

// Waiting for a capture device, it would look at no key.
void ToolSupervisorTest::ffmpegWithoutAFirstPictureIsKilled()
{
    QFETCH(bool, asked);
    QElapsedTimer time;
    time.start();
    Supervision recording({.grabsItself = true, .firstPicture = 700ms});
    QVERIFY(!asked || recording.Keys().Type("q"));
    QCOMPARE(recording.WaitForEnd(), 128 + SIGKILL);
    QVERIFY(recording.Reason() == tool::Ending::NoPicture);
    QVERIFY2(time.elapsed() >= 700, qPrintable(QString("after %1 ms").arg(time.elapsed())));
}

void ToolSupervisorTest::ffmpegWithAFirstPictureIsNot()
{
    Supervision recording({.grabsItself = true, .firstPicture = 300ms});
    recording.FillFile();
    QTest::qWait(900);
    QVERIFY2(IsAlive(recording.Ffmpeg()), "it is killed");
    QVERIFY(recording.Keys().Type("q"));
    QCOMPARE(recording.Typed(1), QByteArray("q"));
}

QTEST_GUILESS_MAIN(ToolSupervisorTest)
#include "tool_supervisor_test.moc"
