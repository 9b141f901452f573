// A portal that disappears while it is used. It is that of a session that nothing else uses.
#include "tests/support/portal_session.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_take.h"

#include <QTest>

#include <csignal>

class PortalLostTest : public QObject
{
    Q_OBJECT

private slots:
    void killedPortalEndsTheRecordingProperly()
    {
        TestPatternProcess pattern{QStringList{"--rate", "30"}};
        QVERIFY2(pattern.IsReady(), "the test pattern does not start");
        const PortalSession session;
        Take take(session.Path("1.mp4"), "0");
        QTRY_VERIFY_WITH_TIMEOUT(take.Taken() > 1, 20000);
        kill(static_cast<pid_t>(qEnvironmentVariableIntValue("LUMENFOLD_PORTAL_BACKEND")), SIGKILL);
        QTRY_VERIFY2_WITH_TIMEOUT(take.HasEnded(), "the recording goes on without pictures", 5000);
        QVERIFY2(take.Text().contains("tool: The desktop has ended the sharing of the screen."),
                 take.Text());
        const RecordingFile file = ReadRecording(take.Path());
        QCOMPARE(file.fault, QString());
        QVERIFY2(file.seconds > 1, "what was recorded is not there");
    }
};

QTEST_GUILESS_MAIN(PortalLostTest)
#include "portal_lost_test.moc"
