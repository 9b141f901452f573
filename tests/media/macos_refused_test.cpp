// Recordings by `tool` as on macOS that get no picture: permissions are missing or not yet given.
// The first picture may take 1.5 s here.
#include "tests/support/macos/mac.h"
#include "tests/support/tool_take.h"

#include <QElapsedTimer>
#include <QTest>

#include <memory>

class MacosRefusedTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_mac = std::make_unique<Mac>("uid"); }
    void missingPermissionIsNamed_data();
    void missingPermissionIsNamed();
    void otherFailuresAreLeftToFfmpeg();
    void stoppedWhileNothingComesEndsToo();

private:
    std::unique_ptr<Mac> m_mac;
};

void MacosRefusedTest::missingPermissionIsNamed_data()
{
    QTest::addColumn<QString>("devices");
    QTest::addColumn<QString>("state");
    QTest::addColumn<QByteArray>("permission");
    const QByteArray screen = "Screen Recording";
    const QByteArray sound = "Microphone";
    QTest::newRow("no picture ever comes") << "0"
                                           << "MAC_SCREEN_IS=waiting" << screen;
    QTest::newRow("nor with sound") << "0:0"
                                    << "MAC_SCREEN_IS=waiting" << screen;
    QTest::newRow("screen refused") << "0"
                                    << "MAC_SCREEN_IS=refused" << screen;
    QTest::newRow("screen refused, with sound") << "0:0 0:2"
                                                << "MAC_SCREEN_IS=refused" << screen;
    QTest::newRow("no sound ever comes") << "0:0"
                                         << "MAC_SOUND_IS=waiting" << sound;
    QTest::newRow("sound refused") << "0:0 0:2"
                                   << "MAC_SOUND_IS=refused" << sound;
}

void MacosRefusedTest::missingPermissionIsNamed()
{
    QFETCH(QString, devices);
    QFETCH(QString, state);
    QFETCH(QByteArray, permission);
    Take take(m_mac->Path("refused.mp4"), devices, {state});
    QVERIFY2(take.WaitForEnd(), "it goes on without a picture");
    QCOMPARE(take.ExitCode(), 1);
    const QByteArrayList lines = take.Text().trimmed().split('\n');
    QVERIFY2(lines.last().startsWith("tool: macOS gives no ") &&
                 lines.last().contains("System Settings, Privacy & Security, " + permission + ","),
             lines.last());
    QVERIFY2(lines.last().size() <= 200, "too long for the message box");
    QCOMPARE(take.Text().count("tool: "), 1);
    QVERIFY2(!QFile::exists(take.Path()), "an empty file is left");
}

void MacosRefusedTest::otherFailuresAreLeftToFfmpeg()
{
    Take take(m_mac->Path("format.mp4"), "0:0", {}, "no-such-format");
    QVERIFY(take.WaitForEnd());
    QVERIFY2(take.ExitCode() != 0, take.Text());
    QVERIFY2(!take.Text().contains("System Settings"), take.Text());
    QVERIFY2(!QFile::exists(take.Path()), "an empty file is left");
}

// ffmpeg waits for the device and reads no key.
void MacosRefusedTest::stoppedWhileNothingComesEndsToo()
{
    Take take(m_mac->Path("stopped.mp4"), "0", {"MAC_SCREEN_IS=waiting"});
    take.Type("q\r\n");
    QVERIFY2(take.WaitForEnd(), "it cannot be stopped");
    QCOMPARE(take.ExitCode(), 1);
    QVERIFY2(!QFile::exists(take.Path()), "an empty file is left");
}

QTEST_GUILESS_MAIN(MacosRefusedTest)
#include "macos_refused_test.moc"
