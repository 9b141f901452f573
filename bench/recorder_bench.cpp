// Measures the real program on a virtual desktop and prints a table. Every figure is compared with
// one from the same run, because machines differ.
#include "bench/capture_commands.h"
#include "bench/encoding_cost.h"
#include "bench/flash_and_beep.h"
#include "bench/table.h"
#include "tests/support/measure.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/x11_desktop.h"

#include <QTest>

#include <cmath>

namespace {

constexpr int kSeconds = 20;

// Entries of the program's list of sounds.
constexpr int kBothSounds = 0;
constexpr int kComputerSounds = 1;

// A recording of kSeconds.
struct Take
{
    double program = 0;      // processor seconds of the recorder
    double all = 0;          // and of everything it started
    qsizetype processes = 0; // beside the recorder
    double memory = 0;       // of those, in MiB
    QStringList command;     // ffmpeg's
    QString file;
    double lasted = 0; // seconds from Record to Stop
    double finish = 0; // seconds from Stop to the finished file
};

double MemoryOfAll(const QList<qint64>& processes)
{
    double sum = 0;
    for (const qint64 process : processes) {
        sum += MemoryOf(process).pss;
    }
    return sum;
}

} // namespace

class RecorderBench : public QObject
{
    Q_OBJECT

private slots:
    void start();
    void memory();
    void recording();
    void stillScreen();
    void firstSeconds();

private:
    bool Record(int sound, Take& take);
    void CompareWithStock(const Take& take);
    void CompareWithEncoding(const QString& what, const Take& take);
    static void PrintFile(const Take& take);

    X11Desktop m_desktop;
    QTemporaryDir m_folder;
};

void RecorderBench::start()
{
    Recorder recorder(m_desktop);
    QList<double> minimal;
    QList<double> ours;
    for (int i = 0; i < 15; ++i) {
        minimal << StartTime(MINIMAL_WINDOW, {}, m_folder.path());
        ours << StartTime(recorder.Beside("lumenfold-recorder"), {"start"}, m_folder.path());
    }
    QVERIFY2(!minimal.contains(-1) && !ours.contains(-1), "a window does not come");
    minimal.removeFirst();
    const double first = ours.takeFirst();
    const double ratio = Median(ours) / Median(minimal);
    Row("Start to window shown / minimal Qt window", Number(ratio), "<= 1.25", ratio <= 1.25);
    Row("  recorder, minimal window",
        Number(Median(ours), 0) + " ms, " + Number(Median(minimal), 0) + " ms");
    Row("  recorder's very first start", Number(first, 0) + " ms");
}

void RecorderBench::memory()
{
    QProcess minimal;
    minimal.start(MINIMAL_WINDOW, QStringList());
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    recorder.ChooseAudio(kBothSounds);
    const Memory ours = MemoryOf(recorder.Pid());
    const Memory theirs = MemoryOf(minimal.processId());
    minimal.terminate();
    minimal.waitForFinished();
    const double ratio = ours.pss / theirs.pss;
    Row("Memory (PSS) / minimal Qt window", Number(ratio), "<= 1.5", ratio <= 1.5);
    Row("  recorder PSS, RSS", Number(ours.pss, 1) + " MiB, " + Number(ours.rss, 1) + " MiB");
}

// Returns false if something does not come.
bool RecorderBench::Record(int sound, Take& take)
{
    Recorder recorder(m_desktop);
    if (!recorder.StartOnRecordPage()) {
        return false;
    }
    recorder.ChooseAudio(sound);
    if (!recorder.StartRecording() || !recorder.RecordFor(1000)) {
        return false;
    }
    QList<qint64> started = Descendants(recorder.Pid());
    for (const qint64 process : ProcessesOf(recorder.Beside("tool"))) {
        if (!started.contains(process)) {
            started << process; // its parent has ended
        }
    }
    take.command = EncoderOf(started);
    const double programBefore = CpuSeconds({recorder.Pid()});
    const double startedBefore = CpuSeconds(started);
    if (take.command.isEmpty() || !recorder.RecordFor(1000 + kSeconds * 1000)) {
        return false;
    }
    take.program = CpuSeconds({recorder.Pid()}) - programBefore;
    take.all = take.program + CpuSeconds(started) - startedBefore;
    take.processes = started.size();
    take.memory = MemoryOfAll(started);
    if (!recorder.ChooseInTray(1)) {
        return false;
    }
    take.lasted = static_cast<double>(recorder.RecordedMs()) / 1000;
    if (!recorder.WaitForTool()) {
        return false;
    }
    take.finish = static_cast<double>(recorder.MsSinceChoice()) / 1000;
    take.file = m_folder.filePath("take.mp4");
    QFile::remove(take.file);
    return QFile::rename(recorder.Recording(), take.file);
}

void RecorderBench::recording()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    Take take;
    QVERIFY2(Record(kComputerSounds, take), "there is no recording");
    const double share = 100 * take.program / kSeconds;
    Row("Recorder's share of one processor, recording", Number(share) + " %", "<= 0.5 %",
        share <= 0.5);
    Row("Processes of a recording beside the recorder", QString::number(take.processes), "<= 2",
        take.processes <= 2);
    CompareWithStock(take);
    CompareWithEncoding("a moving screen", take);
    PrintFile(take);
    Row("Stop to finished file", Number(take.finish) + " s", "<= 1 s", take.finish <= 1);
}

void RecorderBench::stillScreen()
{
    Take take;
    QVERIFY2(Record(kBothSounds, take), "there is no recording");
    CompareWithEncoding("a still screen", take);
}

// ffmpeg without `tool`, for as long.
void RecorderBench::CompareWithStock(const Take& take)
{
    QStringList command = StockCommand(take.command, m_folder.filePath("alone.mp4"));
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(command.takeFirst(), command);
    WaitFor(1000);
    const double before = CpuSeconds({ffmpeg.processId()});
    WaitFor(kSeconds * 1000);
    const double alone = CpuSeconds({ffmpeg.processId()}) - before;
    const double memory = MemoryOf(ffmpeg.processId()).pss;
    ffmpeg.write("q");
    QVERIFY2(ffmpeg.waitForFinished() && ffmpeg.exitCode() == 0 && alone > 0,
             "ffmpeg alone does not record");
    const double ratio = take.all / alone;
    Row("Program, tool and ffmpeg / stock ffmpeg, processor time", Number(ratio), "<= 0.7",
        ratio <= 0.7);
    Row("  in 20 s", Number(take.all, 1) + " s, " + Number(alone, 1) + " s");
    Row("Memory (PSS) of tool and ffmpeg, of stock ffmpeg",
        Number(take.memory, 0) + " MiB, " + Number(memory, 0) + " MiB");
}

// The same pictures and sound, encoded without a recording.
void RecorderBench::CompareWithEncoding(const QString& what, const Take& take)
{
    const auto alone = CostOfEncoding(take.command, take.file, m_folder.path());
    QVERIFY2(alone.has_value(), "ffmpeg alone does not encode");
    const double ratio = take.all / kSeconds / alone->fromFiles;
    Row("Program, tool and ffmpeg / encoding " + what, Number(ratio), "<= 1.3", ratio <= 1.3);
    Row("  in 20 s", Number(take.all) + " s, " + Number(kSeconds * alone->fromFiles) + " s");
    Row("  ffmpeg alone, fed live / encoding", Number(alone->fedLive / alone->fromFiles));
    Row("  program, tool and ffmpeg / ffmpeg alone, fed live",
        Number(take.all / kSeconds / alone->fedLive));
}

void RecorderBench::PrintFile(const Take& take)
{
    const QMap<QString, QString> report = PatternReport(take.file);
    const double distinct = report["distinct_share"].toDouble();
    const int frames = report["video_frames"].toInt();
    Row("Frames of 29.97 a second present and distinct", Number(distinct) + " %", ">= 99.5 %",
        distinct >= 99.5);
    Row("  pictures, of them duplicates, places without one",
        QString("%1, %2, %3")
            .arg(frames)
            .arg(frames - report["distinct_frames"].toInt())
            .arg(report["missing_frames"]));
    bool measured = false;
    const double offset = report["av_offset_ms"].toDouble(&measured);
    Row("Sound after picture", measured ? Number(offset, 0) + " ms" : QString("not heard"),
        "<= 50 ms", measured && std::abs(offset) <= 50);
    PrintWorstPair("Flash farthest from its beep", WorstPair(report));
    Row("  flashes without a beep, beeps without a flash", report["av_unpaired"], "0",
        report["av_unpaired"] == "0");
    const double shorter = take.lasted - report["duration"].toDouble();
    Row("File shorter than the time from Record to Stop", Number(shorter) + " s", "<= 0.3 s",
        shorter <= 0.3);
}

// The output is idle until the recording begins.
void RecorderBench::firstSeconds()
{
    FlashAndBeep worst;
    for (int i = 0; i < 3; ++i) {
        Recorder recorder(m_desktop);
        QVERIFY(recorder.StartOnRecordPage());
        recorder.ChooseAudio(kComputerSounds);
        TestPatternProcess pattern({"--beep", "1000@speaker"});
        QVERIFY2(pattern.IsReady(), "the moving picture does not come");
        QVERIFY(recorder.StartRecording() && recorder.RecordFor(4000) && recorder.ChooseInTray(1) &&
                recorder.WaitForTool());
        const FlashAndBeep pair = WorstPair(PatternReport(recorder.Recording()), 0, 2);
        worst = pair.distance > worst.distance ? pair : worst;
    }
    PrintWorstPair("Flash farthest from its beep, first 2 s after silence", worst);
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    RecorderBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "recorder_bench.moc"
