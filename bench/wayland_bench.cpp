// Measures recordings of a moving picture in a Wayland session, by `tool` without the recorder, and
// prints a table.
#include "bench/table.h"
#include "tests/support/desktop.h"
#include "tests/support/measure.h"
#include "tests/support/recording_file.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_take.h"
#include "tests/support/wayland_takes.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <csignal>

namespace {

constexpr int kSeconds = 10;
constexpr int kRounds = 3;

void WaitFor(int milliseconds)
{
    QElapsedTimer time;
    time.start();
    WaitUntil([&] { return time.hasExpired(milliseconds); }, 2 * milliseconds + 1000);
}

// The processor seconds of these processes in kSeconds, after the first one.
double CpuInAWhile(const QList<qint64>& processes)
{
    WaitFor(1000);
    const double before = CpuSeconds(processes);
    WaitFor(kSeconds * 1000);
    return CpuSeconds(processes) - before;
}

bool SetRate(int hertz)
{
    return TellSway({"output", "*", "mode", QString("1280x800@%1Hz").arg(hertz)});
}

} // namespace

class WaylandBench : public QObject
{
    Q_OBJECT

private slots:
    void waylandCost();
    void waylandFrames();

private:
    double CostOfTool();
    double CostOfWfRecorder();

    QTemporaryDir m_folder;
};

// -1 on failure.
double WaylandBench::CostOfTool()
{
    Take take(m_folder.filePath("tool.mp4"), "0:1");
    if (!WaitUntil([&] { return take.HasPicture(); })) {
        return -1;
    }
    QList<qint64> processes;
    for (const pid_t process : take.Processes()) {
        processes << process;
    }
    const double cost = CpuInAWhile(processes);
    take.Type("q\r\n");
    const bool good = take.WaitForEnd() && take.ExitCode() == 0;
    QFile::remove(take.Path());
    return good ? cost : -1;
}

// With the same encoder settings. It records at the output's rate. -1 on failure.
double WaylandBench::CostOfWfRecorder()
{
    const QString file = m_folder.filePath("other.mp4");
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("wf-recorder",
                  {"-o", "HEADLESS-1", "-c", "libx264", "-p", "preset=ultrafast", "-p", "g=59",
                   "-p", "crf=23", "-t", "-D", "--audio=speaker.monitor", "-f", file});
    if (!process.waitForStarted()) {
        return -1;
    }
    const double cost = CpuInAWhile({process.processId()});
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    const bool good = process.waitForFinished(10000) && ReadRecording(file).seconds > kSeconds;
    QFile::remove(file);
    return good ? cost : -1;
}

void WaylandBench::waylandCost()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(30));
    QList<double> ours;
    QList<double> theirs;
    for (int i = 0; i < kRounds; ++i) {
        ours << CostOfTool();
        theirs << CostOfWfRecorder();
    }
    QVERIFY2(!ours.contains(-1), "tool does not record");
    QVERIFY2(!theirs.contains(-1), "wf-recorder does not record");
    const double our = *std::min_element(ours.begin(), ours.end());
    const double their = *std::min_element(theirs.begin(), theirs.end());
    Row("Wayland: tool and ffmpeg / wf-recorder, processor time", Number(our / their), "<= 0.7",
        our / their <= 0.7);
    Row("  in 10 s, least of three", Number(our) + " s, " + Number(their) + " s");
}

void WaylandBench::waylandFrames()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(60));
    Take take(m_folder.filePath("frames.mp4"), "0:1");
    QVERIFY(WaitUntil([&] { return take.HasPicture(); }));
    WaitFor(kSeconds * 1000);
    take.Type("q\r\n");
    QVERIFY(take.WaitForEnd());
    const auto report = PatternReport(take.Path(), 60000, {"--skip", "1"});
    const double share = report["distinct_share"].toDouble();
    Row("Wayland: frames of 29.97 per second present and distinct", Number(share) + " %", ">= 95 %",
        share >= 95);
    const double offset = report["av_offset_ms"].toDouble();
    Row("Wayland: sound after picture, median", Number(offset, 0) + " ms", "+-50 ms",
        report["av_offset_ms"] != "none" && std::abs(offset) <= 50);
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    WaylandBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "wayland_bench.moc"
