// Services and buses that refuse, fall silent or vanish while `tool` records.
#include "tests/support/idle_services_test.h"

#include <QDBusConnectionInterface>
#include <QLocalServer>
#include <QTemporaryDir>
#include <QTest>

#include <memory>
#include <unistd.h>

class AwakeBusFaultsTest : public IdleServicesTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void servicesThatDoNotRunAreNotStarted();
    void answersDoNotMatter_data();
    void answersDoNotMatter();
    void busThatFailsDelaysNothing_data();
    void busThatFailsDelaysNothing();
    void busThatVanishesDoesNotEndTheRecording();
};

void AwakeBusFaultsTest::init()
{
    Prepare();
}

void AwakeBusFaultsTest::cleanup()
{
    Finish();
}

void AwakeBusFaultsTest::servicesThatDoNotRunAreNotStarted()
{
    const QString started = m_folder->filePath("started");
    QVERIFY(WriteProgram(m_folder->filePath("service"), "#!/bin/sh\ntouch " + started.toUtf8()));
    const auto write = [&](const QString& name, const QByteArray& text) {
        QFile file(m_folder->filePath(name));
        return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
    };
    QVERIFY(write("org.freedesktop.ScreenSaver.service",
                  "[D-BUS Service]\nName=org.freedesktop.ScreenSaver\nExec=" +
                      m_folder->filePath("service").toUtf8() + '\n'));
    QVERIFY(write("bus.conf",
                  "<busconfig><type>session</type><listen>unix:tmpdir=/tmp</listen>"
                  "<servicedir>" +
                      m_folder->path().toUtf8() +
                      "</servicedir><policy context=\"default\">"
                      "<allow send_destination=\"*\"/><allow eavesdrop=\"true\"/><allow own=\"*\"/>"
                      "</policy></busconfig>"));
    StartBus({"--config-file=" + m_folder->filePath("bus.conf")});
    Register("org.gnome.SessionManager", "/org/gnome/SessionManager", *m_sessionManager);
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_sessionManager->asked.size(), 1); // the other one was asked before
    Stop(*take);
    QVERIFY2(!QFile::exists(started), "the recording has started a service");
    QDBusConnection("test").interface()->startService("org.freedesktop.ScreenSaver");
    QTRY_VERIFY2(QFile::exists(started), "the test's service cannot be started at all");
}

void AwakeBusFaultsTest::answersDoNotMatter_data()
{
    QTest::addColumn<Answer>("answer");
    QTest::newRow("refusal") << Answer::Refusal;
    QTest::newRow("silence") << Answer::Silence;
}

void AwakeBusFaultsTest::answersDoNotMatter()
{
    QFETCH(Answer, answer);
    StartBus();
    RegisterAll();
    for (Service* service : std::initializer_list<Service*>{
             m_screenSaver.get(), m_sessionManager.get(), m_logind.get()}) {
        service->answer = answer;
    }
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_logind->asked.size(), 1);
    QTRY_COMPARE(m_sessionManager->asked.size(), 1);
    Stop(*take);
}

void AwakeBusFaultsTest::busThatFailsDelaysNothing_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("no address") << QByteArray();
    QTest::newRow("bus is gone") << QByteArray("unix:path=/nowhere");
    QTest::newRow("nonsense") << QByteArray("%%%");
    QTest::newRow("bus does not answer") << QByteArray("silent");
}

// The library gives up on a bus after 25 s.
void AwakeBusFaultsTest::busThatFailsDelaysNothing()
{
    QFETCH(QByteArray, address);
    QLocalServer silent;
    if (address == "silent") {
        QVERIFY(silent.listen(m_folder->filePath("bus")));
        address = "unix:path=" + silent.fullServerName().toUtf8();
    }
    qputenv("DBUS_SESSION_BUS_ADDRESS", address);
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    QElapsedTimer time;
    time.start();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    Stop(*take);
    QVERIFY2(time.elapsed() < 12000, qPrintable(QString("%1 ms").arg(time.elapsed())));
}

void AwakeBusFaultsTest::busThatVanishesDoesNotEndTheRecording()
{
    StartBus();
    RegisterAll();
    const auto take = Record();
    QVERIFY2(take, "nothing is recorded");
    QTRY_COMPARE(m_screenSaver->asked.size(), 1);
    QTRY_COMPARE(m_logind->asked.size(), 1);
    m_bus.kill();
    QVERIFY(m_bus.waitForFinished());
    const double now = take->Taken();
    QTRY_VERIFY2(take->Taken() > now + 1, "it has ended");
    Stop(*take);
}

QTEST_GUILESS_MAIN(AwakeBusFaultsTest)
#include "awake_bus_faults_test.moc"
