// Measures the real program on a virtual desktop and prints a table. Every figure is compared with
// one from the same run, because machines differ.
#include "bench/table.h"
#include "tests/support/measure.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"

#include <QTest>

class RecorderBench : public QObject
{
    Q_OBJECT

private slots:
    void start();
    void memory();
    void recording();

private:
    static constexpr int kSeconds = 20;

    static void PrintFile(const QString& path, double seconds);
    double FfmpegAlone(QStringList command);

    Desktop m_desktop;
    QTemporaryDir m_folder;
};

namespace {

// The same command with ffmpeg grabbing the screen and reading the sound itself.
QStringList StockCommand(QStringList command)
{
    const auto picture = command.indexOf("rawvideo");
    const auto input = command.indexOf("-i", picture);
    const QString size = command.value(command.indexOf("-video_size") + 1);
    const QString rate = command.value(command.indexOf("-framerate") + 1);
    if (picture > 0 && input > picture) {
        command.erase(command.begin() + picture, command.begin() + input + 2);
        for (const QString& word :
             {qEnvironmentVariable("DISPLAY"), QString("-i"), QString("1"), QString("-draw_mouse"),
              size, QString("-video_size"), rate, QString("-framerate"), QString("x11grab")}) {
            command.insert(picture, word);
        }
    }
    for (QString& word : command) {
        if (word == "s16le") {
            word = "pulse";
        } else if (word.startsWith("/dev/fd/")) {
            word = "speaker.monitor";
        }
    }
    return command;
}

} // namespace

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
    recorder.ChooseAudio(0);
    const Memory ours = MemoryOf(recorder.Pid());
    const Memory theirs = MemoryOf(minimal.processId());
    minimal.terminate();
    minimal.waitForFinished();
    const double ratio = ours.pss / theirs.pss;
    Row("Memory (PSS) / minimal Qt window", Number(ratio), "<= 1.5", ratio <= 1.5);
    Row("  recorder PSS, RSS", Number(ours.pss, 1) + " MiB, " + Number(ours.rss, 1) + " MiB");
}

void RecorderBench::recording()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    Recorder recorder(m_desktop);
    QVERIFY(recorder.StartOnRecordPage());
    recorder.ChooseAudio(1);
    QVERIFY(recorder.StartRecording());
    QVERIFY(recorder.RecordFor(1000));
    const QList<qint64> tool = Descendants(recorder.Pid());
    QVERIFY(!tool.isEmpty());
    const QStringList command = CommandLine(tool.first());
    const double ownBefore = CpuSeconds({recorder.Pid()});
    const double toolBefore = CpuSeconds(tool);
    QVERIFY(recorder.RecordFor(1000 + kSeconds * 1000));
    const double own = CpuSeconds({recorder.Pid()}) - ownBefore;
    const double chain = own + CpuSeconds(tool) - toolBefore;
    QVERIFY(recorder.ChooseInTray(1));
    const double seconds = static_cast<double>(recorder.RecordedMs()) / 1000;
    QVERIFY(recorder.WaitForTool());
    const double finish = static_cast<double>(recorder.MsSinceChoice()) / 1000;
    const double alone = FfmpegAlone(command);
    QVERIFY2(alone > 0, "ffmpeg alone does not record");

    const double share = 100 * own / kSeconds;
    Row("Recorder's share of one processor, recording", Number(share) + " %", "<= 0.5 %",
        share <= 0.5);
    const double ratio = chain / alone;
    Row("Program, tool and ffmpeg / stock ffmpeg, processor time", Number(ratio), "<= 0.7",
        ratio <= 0.7);
    Row("  in 20 s", Number(chain, 1) + " s, " + Number(alone, 1) + " s");
    PrintFile(recorder.Recording(), seconds);
    Row("Stop to finished file", Number(finish) + " s", "<= 1 s", finish <= 1);
}

// The processor seconds ffmpeg takes without `tool`.
double RecorderBench::FfmpegAlone(QStringList command)
{
    command = StockCommand(command);
    command.last() = m_folder.filePath("alone.mp4");
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(command.takeFirst(), command);
    QElapsedTimer time;
    time.start();
    WaitUntil([&] { return time.hasExpired(1000); }, 2000);
    const double before = CpuSeconds({ffmpeg.processId()});
    WaitUntil([&] { return time.hasExpired(1000 + kSeconds * 1000); }, 2000 + kSeconds * 1000);
    const double used = CpuSeconds({ffmpeg.processId()}) - before;
    ffmpeg.write("q");
    return ffmpeg.waitForFinished() && ffmpeg.exitCode() == 0 ? used : -1;
}

void RecorderBench::PrintFile(const QString& path, double seconds)
{
    const QMap<QString, QString> report = PatternReport(path);
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
    const QStringList range = report["av_offset_range"].split(' ');
    const double worst = std::max(-range.first().toDouble(), range.last().toDouble());
    Row("  worst of all flashes", Number(worst, 0) + " ms", "<= 50 ms", measured && worst <= 50);
    Row("  flashes without a beep, beeps without a flash", report["av_unpaired"], "0",
        report["av_unpaired"] == "0");
    const double shorter = seconds - report["duration"].toDouble();
    Row("File shorter than the time from Record to Stop", Number(shorter) + " s", "<= 0.3 s",
        shorter <= 0.3);
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    RecorderBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "recorder_bench.moc"
