// Audio and video sync: finds flashes and beeps, which are shown and played at the same moment, in
// recordings by `tool`.
#include "tests/support/flash_and_beep.h"
#include "tests/support/recording_file.h"
#include "tests/support/tool_take.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <functional>
#include <memory>
#include <optional>

namespace {

constexpr double kMostOffset = 50; // ms
constexpr qint64 kLongestStop = 1000;
constexpr int kFewestPairs = 5;
constexpr double kLatestStart = 1.2; // seconds

QMap<QString, QString> Report(const QString& file, const Source& source, int originY = 0)
{
    return PatternReport(
        file, 60000,
        {"--at", QString("0,%1").arg(source.y - originY), "--beep", QString::number(source.hertz)});
}

int CountOf(const QMap<QString, QString>& report, const QString& key)
{
    return static_cast<int>(report[key].split(' ', Qt::SkipEmptyParts).size());
}

QString Told(const QMap<QString, QString>& report, const QString& name)
{
    return QString("%1: sound %2 ms after the picture (%3), flashes at %4, beeps at %5")
        .arg(name, report["av_offset_ms"], report["av_offset_range"], report["flash_times"],
             report["beep_times"]);
}

void ExpectInStep(const QMap<QString, QString>& report, const QString& name)
{
    const QString told = Told(report, name);
    bool measured = false;
    const double offset = report["av_offset_ms"].toDouble(&measured);
    QVERIFY2(measured && CountOf(report, "flash_times") >= kFewestPairs &&
                 CountOf(report, "beep_times") >= kFewestPairs,
             qPrintable(told));
    QVERIFY2(std::abs(offset) <= kMostOffset, qPrintable(told));
}

// Each flash has its beep and each beep its flash, from this moment on.
void ExpectAllInStep(const QMap<QString, QString>& report, const QString& name, double from)
{
    const QString told = Told(report, name);
    QVERIFY2(CountOf(report, "flash_times") >= kFewestPairs - 2 &&
                 report["flash_times"].section(' ', 0, 0).toDouble() < from,
             qPrintable(told));
    QVERIFY2(report["av_unpaired"] == "0", qPrintable("some are missing; " + told));
    for (const QString& offset : report["av_offset_range"].split(' ')) {
        bool measured = false;
        QVERIFY2(std::abs(offset.toDouble(&measured)) <= kMostOffset && measured, qPrintable(told));
    }
}

Outcome ListDevices()
{
    return RunProgram(TOOL_PROGRAM, {"-f", "avfoundation", "-list_devices", "true", "-i", ""});
}

// Runs pactl, which prints the number of a module that it has loaded.
QString Server(const QStringList& command)
{
    const Outcome outcome = RunProgram("pactl", command);
    if (outcome.code != 0) {
        QTest::qFail(command.join(' ').toUtf8() + ": " + outcome.error, __FILE__, __LINE__);
    }
    return QString::fromUtf8(outcome.output).trimmed();
}

} // namespace

class SoundInStepTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void eachOfBothSoundsLiesWhereItsPictureSays();
    void soundsOfIdleDevicesLieWhereTheirPicturesSay();
    void soundOfTheSecondMonitorLiesWhereItsPictureSays();
    void soundIsAsLongAsThePictureWhereFfmpegGrabsTheScreen();

private: // NOLINT(readability-redundant-access-specifiers): what follows is not a test
    bool Perform();
    QString Record(
        const QString& devices, const QString& pixels = "yuv420p",
        const std::function<void()>& begun = [] {});

    std::unique_ptr<Performance> m_performance; // kept from one test to the next
    std::unique_ptr<QTemporaryDir> m_folder;
};

void SoundInStepTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    const Outcome list = ListDevices();
    QVERIFY2(list.error.contains("[0] Microphone") && list.error.contains("[1] Computer sounds"),
             list.error);
}

// Returns false if the test patterns do not start or the sound server delivers nothing.
bool SoundInStepTest::Perform()
{
    if (m_performance != nullptr) {
        return true;
    }
    m_performance = std::make_unique<Performance>();
    return m_performance->IsReady();
}

// Records these devices in this pixel format for a few seconds. Returns the path of the file, or
// empty on failure. `begun` is called at the beginning.
QString SoundInStepTest::Record(const QString& devices, const QString& pixels,
                                const std::function<void()>& begun)
{
    QString path = m_folder->filePath("recording.mp4");
    Take take(path, devices, {}, pixels);
    begun();
    constexpr int milliseconds = 4500;
    bool good = QTest::qWaitFor([&] { return take.HasPicture(); }, 20000);
    const QDeadlineTimer end(milliseconds);
    good = good && QTest::qWaitFor([&] { return end.hasExpired(); }, 2 * milliseconds);
    QElapsedTimer stopping;
    stopping.start();
    take.Type("q\r\n");
    if (!good || !take.WaitForEnd() || take.ExitCode() != 0) {
        QTest::qFail("no recording: " + take.Text().right(1000), __FILE__, __LINE__);
        return {};
    }
    if (stopping.elapsed() > kLongestStop) {
        QTest::qFail("stopped after " + QByteArray::number(stopping.elapsed()) + " ms", __FILE__,
                     __LINE__);
        return {};
    }
    return path;
}

void SoundInStepTest::eachOfBothSoundsLiesWhereItsPictureSays()
{
    QVERIFY(Perform());
    const QString path = Record("0:0 0:1");
    if (path.isEmpty()) {
        return;
    }
    ExpectInStep(Report(path, kSpeaker), "computer sounds");
    ExpectInStep(Report(path, kMicrophone), "microphone");
}

// From the first second on. The output has become the default since the devices were listed.
void SoundInStepTest::soundsOfIdleDevicesLieWhereTheirPicturesSay()
{
    m_performance.reset(); // the server would move what plays to the new default
    const QStringList modules = {
        Server({"load-module", "module-null-sink", "sink_name=idle"}),
        Server({"load-module", "module-null-sink", "sink_name=voice", "norewinds=1"})};
    Server({"load-module", "module-remap-source", "source_name=headset", "master=voice.monitor",
            "source_properties=device.description=Headset"});
    Server({"set-default-source", "headset"});
    const Outcome list = ListDevices();
    Server({"set-default-sink", "idle"});
    QVERIFY2(list.error.contains("[0] Microphone (Headset)") &&
                 list.error.contains("[2] Computer sounds (Speaker)"),
             list.error);
    std::optional<TestPatternProcess> first;
    std::optional<TestPatternProcess> second;
    const QString path = Record("0:0 0:2", "yuv420p", [&] {
        first.emplace(PatternOptions(kIdleSpeaker));
        second.emplace(PatternOptions(kIdleMicrophone));
    });
    for (const QString& module : modules) {
        Server({"unload-module", module});
    }
    Server({"set-default-source", kMicrophone.name});
    Server({"set-default-sink", kSpeaker.output});
    if (path.isEmpty()) {
        return;
    }
    ExpectAllInStep(Report(path, kIdleSpeaker), "computer sounds", 2 + kLatestStart);
    ExpectAllInStep(Report(path, kIdleMicrophone), "microphone", kLatestStart);
}

// Its picture starts at the second pattern.
void SoundInStepTest::soundOfTheSecondMonitorLiesWhereItsPictureSays()
{
    QVERIFY(Perform());
    const QStringList monitor{"--setmonitor", "second",
                              QString("320/100x100/100+0+%1").arg(kMicrophone.y), "none"};
    const Outcome made = RunProgram("xrandr", monitor);
    QVERIFY2(made.code == 0, made.error);
    const QString path = Record("0:0"); // the server names added monitors first
    RunProgram("xrandr", {"--delmonitor", "second"});
    if (path.isEmpty()) {
        return;
    }
    const QMap<QString, QString> report = Report(path, kMicrophone, kMicrophone.y);
    QCOMPARE(report["height"], QString("100"));
    ExpectInStep(report, "microphone");
}

// As for a pixel format that `tool` does not deliver.
void SoundInStepTest::soundIsAsLongAsThePictureWhereFfmpegGrabsTheScreen()
{
    QVERIFY(Perform());
    const QString path = Record("0:0 0:1", "yuv444p");
    if (path.isEmpty()) {
        return;
    }
    const QByteArray told = Content(path + ".log");
    QVERIFY2(told.contains("Input #0, x11grab"), told);
    for (const Source& source : {kSpeaker, kMicrophone}) {
        const QMap<QString, QString> report = Report(path, source);
        const double picture = report["duration"].toDouble();
        const double sound = report["sound_duration"].toDouble();
        QVERIFY2(picture >= 3 && std::abs(picture - sound) <= 0.5,
                 qPrintable(QString("%1 s of picture, %2 s of sound").arg(picture).arg(sound)));
        QVERIFY2(CountOf(report, "beep_times") >= kFewestPairs,
                 qPrintable(source.output + " is heard at " + report["beep_times"]));
    }
}

QTEST_GUILESS_MAIN(SoundInStepTest)
#include "sound_in_step_test.moc"
