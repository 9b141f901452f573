// Records a known picture and known sounds with each audio choice and inspects the file.
#include "tests/support/desktop_test.h"
#include "tests/support/measure.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"

#include <QElapsedTimer>
#include <QTest>

#include <algorithm>
#include <unistd.h>

namespace {

constexpr double kLeastDistinct = 95; // percent, where nobody has to wait for a processor

// How long each process of the virtual desktop has been kept waiting: the X server, the pattern,
// and all that records.
QMap<qint64, double> Waits()
{
    return WaitSeconds(Descendants(getppid()));
}

// The longest that any of them was kept waiting meanwhile.
double LongestWait(const QMap<qint64, double>& before, const QMap<qint64, double>& after)
{
    double longest = 0;
    for (auto process = before.begin(); process != before.end(); ++process) {
        longest = std::max(longest, after.value(process.key()) - process.value());
    }
    return longest;
}

} // namespace

class RecordingDesktopTest : public DesktopTest
{
    Q_OBJECT

private slots:
    void recordingHasThePictureAndTheChosenSound_data();
    void recordingHasThePictureAndTheChosenSound();

private:
    void Prepare() override;
    TestPatternProcess m_pattern;
};

void RecordingDesktopTest::Prepare()
{
    QVERIFY2(m_pattern.IsReady(), "the test pattern does not start");
}

void RecordingDesktopTest::recordingHasThePictureAndTheChosenSound_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QString>("input"); // the input in the tool's command line, from the log
    QTest::addColumn<bool>("speaker");
    QTest::addColumn<bool>("microphone");
    QTest::newRow("both") << 0 << R"(-i \"0:0\" -f avfoundation -i \"0:1\" -ar)" << true << true;
    QTest::newRow("computer sounds") << 1 << R"(-i \"0:1\" -ar)" << true << false;
    QTest::newRow("microphone") << 2 << R"(-i \"0:0\" -ar)" << false << true;
    QTest::newRow("none") << 3 << R"(-i \"0\" -ar)" << false << false;
}

void RecordingDesktopTest::recordingHasThePictureAndTheChosenSound()
{
    QFETCH(int, entry);
    QFETCH(QString, input);
    QFETCH(bool, speaker);
    QFETCH(bool, microphone);
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    recorder.ChooseAudio(entry);
    QVERIFY2(recorder.StartRecording(), "no file grows");
    QVERIFY2(recorder.Log().contains(input), qPrintable("not " + input + " in " + recorder.Log()));
    // A busy machine may need a while to start recording and to open a menu.
    QElapsedTimer sinceBegin;
    sinceBegin.start();
    const QMap<qint64, double> waits = Waits();
    QVERIFY(QTest::qWaitFor([&] { return sinceBegin.hasExpired(4500); }, 10000));
    const double longestWait = LongestWait(waits, Waits());
    const double least = static_cast<double>(sinceBegin.elapsed()) / 1000 - 0.5;
    QVERIFY2(recorder.ChooseInTray(1), "the tray's menu does not open");
    const double most = static_cast<double>(recorder.RecordedMs()) / 1000 + 0.5;
    QVERIFY2(recorder.WaitShown(), "the window does not come back");
    QVERIFY2(recorder.WaitForTool(), "the tool does not end");

    QCOMPARE(recorder.Recordings().size(), 1);
    const QString path = recorder.Recording();
    const RecordingFile file = ReadRecording(path);
    QCOMPARE(file.fault, QString());
    QCOMPARE(file.pictureTracks, QStringList{"h264 yuv420p 1280x800"});
    const bool sound = speaker || microphone;
    QCOMPARE(file.soundTracks, sound ? QStringList{"aac"} : QStringList{});
    QVERIFY2(
        file.seconds >= least && file.seconds <= most,
        qPrintable(
            QString("%1 s long, recorded for %2 to %3 s").arg(file.seconds).arg(least).arg(most)));

    const QMap<QString, QString> report = PatternReport(path);
    // A process without a processor shows, takes or encodes nothing, and that is not our fault.
    const double excused = 100 * longestWait / (least + 0.5);
    QVERIFY2(report["distinct_share"].toDouble() >= kLeastDistinct - excused,
             qPrintable(QString("distinct frames: %1 %, and a process waited %2 s for a processor")
                            .arg(report["distinct_share"])
                            .arg(longestWait)));
    const QStringList tones = report["tones"].split(' ');
    const QByteArray heard = "heard: " + report["tones"].toUtf8();
    QVERIFY2(tones.contains(QString::number(TestPatternProcess::kSpeakerTone)) == speaker, heard);
    QVERIFY2(tones.contains(QString::number(TestPatternProcess::kMicrophoneTone)) == microphone,
             heard);
}

QTEST_GUILESS_MAIN(RecordingDesktopTest)
#include "recording_desktop_test.moc"
