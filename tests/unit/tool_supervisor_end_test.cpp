// What ends a supervised recording besides the key.
#include "tests/support/supervision.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

class ToolSupervisorEndTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
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

void ToolSupervisorEndTest::init()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGHUP, SIG_DFL);
}

// The recorder has died, so nobody can stop the recording any more.
void ToolSupervisorEndTest::endOfTheKeyboardEndsTheRecording()
{
    Supervision recording({});
    QVERIFY(recording.Keys().Type("1"));
    QCOMPARE(recording.Typed(1), QByteArray("1"));
    QVERIFY(!recording.HasEnded());
    recording.Keys().StopTyping();
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
}

void ToolSupervisorEndTest::keyboardThatIsNoPipeMayEnd()
{
    const tool::Descriptor nothing(open("/dev/null", O_RDONLY | O_CLOEXEC));
    Supervision recording({.keyboard = nothing.Number()});
    QVERIFY2(recording.AwaitLook(), "it does not look");
    QVERIFY2(!recording.HasEnded(), "it ends without being told to");
}

void ToolSupervisorEndTest::signalsEndTheRecording_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("terminated") << SIGTERM;
    QTest::newRow("interrupted") << SIGINT;
    QTest::newRow("terminal closed") << SIGHUP;
}

void ToolSupervisorEndTest::signalsEndTheRecording()
{
    QFETCH(int, signal);
    Supervision recording({});
    QCOMPARE(kill(getpid(), signal), 0);
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QCOMPARE(recording.TypedUntilNow(), QByteArray());
}

// As under nohup.
void ToolSupervisorEndTest::hangUpThatIsIgnoredDoesNot()
{
    std::signal(SIGHUP, SIG_IGN);
    Supervision recording({});
    QCOMPARE(kill(getpid(), SIGHUP), 0);
    QVERIFY(recording.Keys().Type("1"));
    QCOMPARE(recording.Typed(1), QByteArray("1"));
    QVERIFY2(!recording.HasEnded(), "it ends");
}

// It has no effect on ffmpeg itself, which blocks the signal.
void ToolSupervisorEndTest::hangUpOfFfmpegEndsTheRecording()
{
    Supervision recording({});
    QCOMPARE(kill(recording.Ffmpeg(), SIGHUP), 0);
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QVERIFY2(IsAlive(recording.Ffmpeg()), "ffmpeg is gone");
}

void ToolSupervisorEndTest::endOfFfmpegEndsTheRecording()
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

void ToolSupervisorEndTest::ffmpegWithoutAFirstPictureIsKilled_data()
{
    QTest::addColumn<bool>("asked");
    QTest::newRow("nobody stops the recording") << false;
    QTest::newRow("the user has stopped it") << true;
}

// Waiting for a capture device, it would look at no key.
void ToolSupervisorEndTest::ffmpegWithoutAFirstPictureIsKilled()
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

void ToolSupervisorEndTest::ffmpegWithAFirstPictureIsNot()
{
    QElapsedTimer time;
    Supervision recording({.grabsItself = true, .firstPicture = 300ms});
    recording.FillFile();
    time.start();
    QTRY_VERIFY(time.hasExpired(301));
    QVERIFY2(recording.AwaitLook(), "it does not look");
    QVERIFY2(IsAlive(recording.Ffmpeg()), "it is killed");
    QVERIFY(recording.Keys().Type("q"));
    QCOMPARE(recording.Typed(1), QByteArray("q"));
}

QTEST_GUILESS_MAIN(ToolSupervisorEndTest)
#include "tool_supervisor_end_test.moc"
