// Recordings by `tool` through the real portal of a Wayland desktop. The person who answers its
// dialog is a script.
#include "tests/support/portal_session.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_take.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>
#include <functional>
#include <sys/stat.h>

namespace {

constexpr auto kSize = "1280x800";

} // namespace

class PortalDesktopTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(m_pattern.IsReady(), "the test pattern does not start"); }

    void init()
    {
        m_session.Answer("echo HEADLESS-1");
        QDir(m_session.Tokens()).removeRecursively();
        RemoveRecording();
    }

    void questionComesOnce()
    {
        QVERIFY(Record());
        QCOMPARE(m_session.Questions(), 1);
        const auto report = PatternReport(m_session.Path("1.mp4"));
        QVERIFY2(report.value("distinct_frames").toInt() > 10,
                 "the recording does not show the screen");
        const QStringList tokens = FileNames(m_session.Tokens());
        QCOMPARE(tokens, QStringList{"screen-1280x800-0-0"});
        for (int again = 0; again < 2; ++again) {
            QVERIFY(Record());
            QCOMPARE(m_session.Questions(), 1);
        }
    }

    void listAsksNobody()
    {
        qputenv("LD_DEBUG", "files");
        const Outcome list =
            RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
        qunsetenv("LD_DEBUG");
        QVERIFY2(list.error.contains("[1] Capture screen 1"), list.error.right(300));
        QCOMPARE(m_session.Questions(), 0);
        QVERIFY2(list.error.contains("libwayland-client"), "what is loaded is not told");
        QVERIFY2(!list.error.contains("libpipewire"), "a list loads PipeWire's library");
    }

    void badTokenBringsTheQuestionBack_data()
    {
        QTest::addColumn<QByteArray>("commands");
        QTest::newRow("text") << QByteArray("echo nonsense >$0");
        QTest::newRow("unknown") << QByteArray("echo 00000000-0000-0000-0000-000000000000 >$0");
        QTest::newRow("a folder") << QByteArray("mkdir $0");
        QTest::newRow("a pipe") << QByteArray("mkfifo $0");
        QTest::newRow("huge") << QByteArray("truncate --size=3G $0");
        QTest::newRow("in a file") << QByteArray("rmdir ${0%/*} && echo >${0%/*}");
    }

    void badTokenBringsTheQuestionBack()
    {
        QFETCH(QByteArray, commands);
        QVERIFY(QDir().mkpath(m_session.Tokens()));
        QCOMPARE(
            RunProgram("/bin/sh", {"-c", commands, m_session.Tokens() + "/screen-1280x800-0-0"})
                .code,
            0);
        QVERIFY(Record());
        QCOMPARE(m_session.Questions(), 1);
        QFile::remove(m_session.Tokens());
    }

    void declinedRecordingIsToldAndLeavesNoFile()
    {
        m_session.Answer("true");
        Take take(m_session.Path("1.mp4"), "0");
        QVERIFY(take.WaitForEnd());
        QVERIFY2(take.ExitCode() != 0, "no failure");
        QVERIFY2(take.Text().endsWith(
                     "tool: Recording the screen was declined in the desktop's dialog.\n"),
                 take.Text());
        QVERIFY2(!QFile::exists(take.Path()), "a file is left");
    }

    void recordingEndsDuringTheQuestion_data()
    {
        QTest::addColumn<QByteArray>("end");
        QTest::newRow("by a key") << QByteArray("q");
        QTest::newRow("with the keyboard") << QByteArray();
        QTest::newRow("by a signal") << QByteArray("TERM");
    }

    void recordingEndsDuringTheQuestion()
    {
        QFETCH(QByteArray, end);
        m_session.AnswerLater();
        Take take(m_session.Path("1.mp4"), "0");
        QTRY_COMPARE(m_session.Questions(), 1);
        QTRY_VERIFY2(take.Text().contains("Waiting for the desktop"), "the recorder hears nothing");
        const auto processes = take.Processes();
        QElapsedTimer timer;
        timer.start();
        if (end == "TERM") {
            QVERIFY(take.EndTool(SIGTERM));
        } else if (end.isEmpty()) {
            take.StopTyping();
        } else {
            take.Type(end);
        }
        QVERIFY2(take.WaitForEnd(), "it goes on");
        const qint64 took = timer.elapsed();
        QVERIFY2(took < 1000, qPrintable(QString("it takes %1 ms").arg(took)));
        QVERIFY2(!QFile::exists(take.Path()), "a file is left");
        for (const pid_t process : processes) {
            QTRY_VERIFY2(!IsAlive(process), "a process is left");
        }
        m_session.Release();
    }

    // A screen that is still brings none. A token is stored when the person has answered.
    void recordingEndsBeforeTheFirstPicture()
    {
        m_session.Answer("echo HEADLESS-2");
        Take take(m_session.Path("1.mp4"), "0");
        QTRY_COMPARE_WITH_TIMEOUT(FileNames(m_session.Tokens()).size(), 1, 20000);
        take.Type("q");
        QVERIFY2(take.WaitForEnd(), "it goes on");
        QVERIFY2(take.Text().endsWith("tool: The recording was ended before it had begun.\n"),
                 take.Text());
        QVERIFY2(!QFile::exists(take.Path()), "a file is left");
    }

    // The desktop would go on showing that the screen is shared.
    void killedToolLeavesNoProcess()
    {
        Take take(m_session.Path("1.mp4"), "0");
        QTRY_VERIFY2_WITH_TIMEOUT(take.Taken() > 0.5, take.Text(), 20000);
        const auto processes = take.Processes();
        QCOMPARE(processes.size(), 3); // tool, the portal's, ffmpeg
        QVERIFY(take.EndTool(SIGKILL));
        for (const pid_t process : processes) {
            QTRY_VERIFY2(!IsAlive(process), "a process is left");
        }
        QCOMPARE(ReadRecording(take.Path()).fault, QString());
    }

    void monitorThatIsChosenIsRecordedInItsSize()
    {
        QVERIFY(PortalSession::Change({"HEADLESS-2", "mode", "640x480@60Hz"}));
        m_session.Answer("echo HEADLESS-2");
        QVERIFY(Record("640x480"));
    }

    void turnedMonitorIsRecordedUpright()
    {
        QVERIFY(PortalSession::Change({"HEADLESS-1", "transform", "90"}));
        const bool recorded = Record("800x1280");
        QVERIFY(PortalSession::Change({"HEADLESS-1", "transform", "normal"}));
        QVERIFY(recorded);
        const auto report = PatternReport(m_session.Path("1.mp4"));
        QVERIFY2(report.value("distinct_frames").toInt() > 10,
                 "the pattern is not where it belongs");
    }

    void fileKeepsItsSizeWhenTheMonitorChanges()
    {
        const bool recorded = Record(kSize, [] {
            return PortalSession::Change({"HEADLESS-1", "mode", "1024x768@60Hz"});
        });
        QVERIFY(PortalSession::Change({"HEADLESS-1", "mode", "1280x800@60Hz"}));
        QVERIFY(recorded);
    }

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    // What `tool` said too.
    void RemoveRecording() const
    {
        QFile::remove(m_session.Path("1.mp4"));
        QFile::remove(m_session.Path("1.mp4.log"));
    }

    // Records for a moment, and again after `change`. Explains a failure.
    bool Record(const QString& size = kSize, const std::function<bool()>& change = {})
    {
        RemoveRecording();
        Take take(m_session.Path("1.mp4"), "0");
        const auto reaches = [&](double seconds) {
            return QTest::qWaitFor([&] { return take.HasEnded() || take.Taken() > seconds; },
                                   20000) &&
                   !take.HasEnded();
        };
        bool good = reaches(0.5) && (!change || (change() && reaches(2)));
        QElapsedTimer timer;
        timer.start();
        take.Type("q");
        good = take.WaitForEnd() && good;
        const RecordingFile file = ReadRecording(take.Path());
        const auto expected = QStringList{"h264 yuv420p " + size};
        if (!good || timer.elapsed() > 2000 || take.ExitCode() != 0 || !file.fault.isEmpty() ||
            file.pictureTracks != expected) {
            qWarning() << "code" << take.ExitCode() << "end took" << timer.elapsed() << "ms"
                       << file.fault << file.pictureTracks << take.Text().right(800);
            return false;
        }
        return true;
    }

    PortalSession m_session;
    TestPatternProcess m_pattern{QStringList{"--rate", "30"}};
};

QTEST_GUILESS_MAIN(PortalDesktopTest)
#include "portal_desktop_test.moc"
