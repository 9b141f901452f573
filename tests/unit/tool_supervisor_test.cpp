// The supervisor, with a program that prints its input in place of ffmpeg.
#include "tests/support/supervision.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>

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
    QCOMPARE(recording.TypedUntilNow(), QByteArray());
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
    QTRY_VERIFY2(recording.HasEnded(), "it goes on");
    QCOMPARE(recording.TypedUntilNow(), QByteArray());
    recording.FillFile();
    QCOMPARE(recording.TypedUntilNow(), QByteArray("q"));
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
        QTest::qWait(250); // all writes together take longer than its patience
        QVERIFY2(IsAlive(recording.Ffmpeg()), "it is killed while it writes");
        recording.FillFile();
    }
    QTRY_VERIFY2(!IsAlive(recording.Ffmpeg()), "it stays for ever");
    QCOMPARE(recording.WaitForEnd(), 128 + SIGKILL);
}

QTEST_GUILESS_MAIN(ToolSupervisorTest)
#include "tool_supervisor_test.moc"
