// A short recording by `tool` with the ffmpeg named by LUMENFOLD_FFMPEG, inspected with the one in
// PATH.
#include "tests/support/recorder_command.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

class CaptureDesktopTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void captureHasPictureAndSoundAndIsAsLongAsRecorded_data();
    void captureHasPictureAndSoundAndIsAsLongAsRecorded();

private:
    TestPatternProcess m_pattern;
    QTemporaryDir m_folder;
};

void CaptureDesktopTest::initTestCase()
{
    QVERIFY(m_folder.isValid());
    QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
}

void CaptureDesktopTest::captureHasPictureAndSoundAndIsAsLongAsRecorded_data()
{
    QTest::addColumn<QStringList>("inputs");
    QTest::addColumn<bool>("microphone");
    QTest::newRow("computer sounds") << QStringList{"0:1"} << false;
    QTest::newRow("both") << QStringList{"0:0", "0:1"} << true;
}

void CaptureDesktopTest::captureHasPictureAndSoundAndIsAsLongAsRecorded()
{
    QFETCH(QStringList, inputs);
    QFETCH(bool, microphone);
    const QString path = m_folder.filePath(QString("%1 inputs.mp4").arg(inputs.size()));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(TOOL_PROGRAM, RecorderCommand(inputs, path));
    QByteArray text;
    QElapsedTimer time;
    time.start();
    const auto read = [&] { text += process.readAll(); };
    while (!text.contains("Press [q]") && process.waitForReadyRead()) {
        read();
    }
    QVERIFY2(text.contains("Press [q]"), text);
    constexpr int recorded = 4000;
    while (time.elapsed() < recorded && process.state() == QProcess::Running) {
        process.waitForReadyRead(static_cast<int>(recorded - time.elapsed()));
        read();
    }
    process.write("q\r\n");
    const double seconds = static_cast<double>(time.elapsed()) / 1000;
    const bool ended = process.waitForFinished();
    read();
    QVERIFY2(ended && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0,
             text);

    const RecordingFile file = ReadRecording(path);
    QCOMPARE(file.fault, QString());
    QCOMPARE(file.pictureTracks, QStringList{"h264 yuv420p 1280x800"});
    QCOMPARE(file.soundTracks, QStringList{"aac"});
    QVERIFY2(std::abs(file.seconds - seconds) <= 0.5,
             qPrintable(QString("%1 s long, recorded for %2 s").arg(file.seconds).arg(seconds)));
    const QMap<QString, QString> report = PatternReport(path);
    QVERIFY2(report["distinct_share"].toDouble() >= 80,
             qPrintable("distinct frames: " + report["distinct_share"] + " %"));
    const QStringList tones = report["tones"].split(' ');
    const QByteArray heard = "heard: " + report["tones"].toUtf8();
    QVERIFY2(tones.contains(QString::number(TestPatternProcess::kSpeakerTone)), heard);
    QVERIFY2(tones.contains(QString::number(TestPatternProcess::kMicrophoneTone)) == microphone,
             heard);
}

QTEST_GUILESS_MAIN(CaptureDesktopTest)
#include "capture_desktop_test.moc"
