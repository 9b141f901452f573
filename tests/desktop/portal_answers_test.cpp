// The talk with a desktop's portal that is slow, refuses, lies or disappears.
#include "tests/support/own_bus.h"
#include "tool/screen/portal/portal_process.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <poll.h>

using namespace tool;

namespace {

constexpr Rectangle kScreen{0, 0, 640, 480};
constexpr auto kToken = "934750eb-68f0-448d-8930-34377bab5b3e";

bool IsReady(const PortalProcess& process, int milliseconds)
{
    pollfd event{process.Number(), POLLIN, 0};
    return poll(&event, 1, milliseconds) > 0;
}

} // namespace

class PortalAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        qputenv("XDG_STATE_HOME", m_folder->path().toUtf8());
        qunsetenv("XDG_RUNTIME_DIR");
        QVERIFY2(m_bus.Start(m_folder->path()), "dbus-daemon does not start");
    }

    void cleanup()
    {
        m_portal.kill();
        m_portal.waitForFinished();
        m_bus.End();
    }

    void sessionIsAskedForWithThePointerAndAToken()
    {
        Store(kToken);
        const auto process = Ask({});
        ExpectStream(*process);
        const QByteArray log = Log();
        for (const QByteArray option :
             {"types=1", "multiple=0", "cursor_mode=2", "persist_mode=2"}) {
            QVERIFY2(log.contains(option + '\n'), option + " is missing in " + log);
        }
        QVERIFY2(log.contains(QByteArray("restore_token=") + kToken), log);
        QCOMPARE(Stored(), QByteArray(kToken) + '\n');
    }

    void portalThatKnowsNoTokensGetsNone()
    {
        Store(kToken);
        const auto process = Ask({"old"});
        ExpectStream(*process);
        QVERIFY2(!Log().contains("restore_token") && !Log().contains("persist_mode") &&
                     !Log().contains("cursor_mode"),
                 Log());
    }

    void answersOfAnyKindAreUnderstood_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::newRow("before the reply") << "answers early";
        QTest::newRow("of a person who takes time") << "is asked slowly";
        QTest::newRow("beside those of a stranger") << "is lied about";
        QTest::newRow("with a token that is none") << "gives a bad token";
    }

    void answersOfAnyKindAreUnderstood()
    {
        QFETCH(QString, fault);
        const auto process = Ask({fault});
        ExpectStream(*process);
        QCOMPARE(Stored(), fault == "gives a bad token" ? QByteArray() : QByteArray(kToken) + '\n');
    }

    void reasonIsToldWhenThereIsNoStream_data()
    {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("reason");
        const QString none = "No screen can be recorded: the desktop's portal ";
        QTest::newRow("declined") << "declines"
                                  << "Recording the screen was declined in the desktop's dialog";
        QTest::newRow("given up") << "gives up" << none + "gives no permission";
        QTest::newRow("no monitors") << "has no monitors" << none + "offers none";
        QTest::newRow("no streams") << "has no streams" << none + "gives no stream";
        QTest::newRow("streams of another type") << "confuses Start" << none + "gives no stream";
        QTest::newRow("no session") << "confuses CreateSession" << none + "has begun no session";
        QTest::newRow("empty answers") << "says nothing" << none + "gives no permission";
        QTest::newRow("no access") << "gives no access" << none + "gives no access to PipeWire";
        QTest::newRow("an error") << "refuses SelectSources"
                                  << none + "refuses (SelectSources: not today: really [31m not)";
        QTest::newRow("ends in the dialog") << "ends" << none + "does not answer (Start)";
        QTest::newRow("closes in the dialog")
            << "closes at once" << none + "does not answer (Start)";
    }

    void reasonIsToldWhenThereIsNoStream()
    {
        QFETCH(QString, fault);
        QFETCH(QString, reason);
        const auto process = Ask({fault});
        QVERIFY2(IsReady(*process, 10000), "no answer");
        const PortalReport report = process->Read();
        QVERIFY(!report.pipewire.IsOpen());
        QCOMPARE(QString::fromStdString(report.reason), reason);
    }

    void portalThatIsMissingIsTold()
    {
        const auto process = PortalProcess::Start(kScreen);
        QVERIFY2(IsReady(*process, 10000), "no answer");
        const auto reason = QString::fromStdString(process->Read().reason);
        QVERIFY2(reason.contains("refuses (GetAll: The name org.freedesktop.portal.Desktop"),
                 qPrintable(reason));
    }

    void busThatIsMissingIsTold()
    {
        m_bus.End();
        const auto process = PortalProcess::Start(kScreen);
        QVERIFY2(IsReady(*process, 10000), "no answer");
        QCOMPARE(
            QString::fromStdString(process->Read().reason),
            QString("No screen can be recorded: there is no session bus to ask the desktop on"));
    }

    void busThatEndsDuringTheQuestionIsTold()
    {
        const auto process = Ask({"never answers"});
        QVERIFY2(!IsReady(*process, 300), "answered");
        m_bus.End();
        QVERIFY2(IsReady(*process, 10000), "no answer");
        QVERIFY(process->Read().reason.ends_with("does not answer (Start)"));
    }

    // The pictures may still come.
    void busThatEndsLaterEndsNoSession()
    {
        const auto process = Ask({});
        ExpectStream(*process);
        m_bus.End();
        QVERIFY2(!IsReady(*process, 500), "the session has ended");
    }

    void sessionEndsWhenTheDesktopClosesIt()
    {
        const auto process = Ask({"closes later"});
        QVERIFY2(IsReady(*process, 10000), "no answer");
        QVERIFY(process->Read().pipewire.IsOpen());
        QVERIFY2(IsReady(*process, 10000), "the session goes on");
    }

    void questionEndsAtOnceWithTheProcess()
    {
        auto process = Ask({"never answers"});
        QVERIFY2(!IsReady(*process, 300), "answered");
        QElapsedTimer timer;
        timer.start();
        process.reset();
        QVERIFY2(timer.elapsed() < 500, "the end waits for the portal");
    }

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    std::unique_ptr<PortalProcess> Ask(const QStringList& faults)
    {
        m_portal.start(FAKE_PORTAL, QStringList{m_folder->filePath("log")} + faults);
        if (!m_portal.waitForReadyRead()) {
            qFatal("the fake portal does not start");
        }
        return PortalProcess::Start(kScreen);
    }
    static void ExpectStream(const PortalProcess& process)
    {
        QVERIFY2(IsReady(process, 10000), "no answer");
        const PortalReport report = process.Read();
        QCOMPARE(QString::fromStdString(report.reason), QString());
        QVERIFY(report.pipewire.IsOpen());
        QCOMPARE(report.node, 42U);
        QVERIFY2(!IsReady(process, 0), "the session has ended");
    }

    QByteArray Log() const { return Content(m_folder->filePath("log")); }
    QString TokenFile() const
    {
        return m_folder->filePath("lumenfold-recorder/screen-640x480-0-0");
    }
    void Store(const QByteArray& token) const
    {
        QDir().mkpath(m_folder->filePath("lumenfold-recorder"));
        QVERIFY(Write(TokenFile(), token));
    }
    QByteArray Stored() const { return Content(TokenFile()); }

    std::unique_ptr<QTemporaryDir> m_folder;
    OwnBus m_bus;
    QProcess m_portal;
};

QTEST_GUILESS_MAIN(PortalAnswersTest)
#include "portal_answers_test.moc"
