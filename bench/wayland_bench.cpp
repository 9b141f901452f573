// Measures recordings of a moving picture in a Wayland session, and prints a table.
#include "bench/table.h"
#include "bench/wayland_cost.h"
#include "bench/wayland_drift.h"
#include "tests/support/measure.h"
#include "tests/support/portal_session.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"
#include "tests/support/sway_desktop.h"
#include "tests/support/test_pattern_process.h"
#include "tests/support/tool_take.h"
#include "tests/support/wayland_takes.h"

#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

namespace {

constexpr int kSeconds = 10;
constexpr int kRounds = 3;

bool SetRate(int hertz)
{
    return TellSway({"output", "*", "mode", QString("1280x800@%1Hz").arg(hertz)});
}

double Least(const QList<double>& values)
{
    return *std::min_element(values.begin(), values.end());
}

} // namespace

class WaylandBench : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY2(m_desktop.Good(), "no sway"); }
    void waylandCost();
    void waylandFrames();
    void portalCost();
    void waylandDrift();

private:
    bool RecordForMinutes(Recorder& recorder, int minutes, QMap<qint64, Holding>& processes);
    SwayDesktop m_desktop;
    QTemporaryDir m_folder;
};

void WaylandBench::waylandCost()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(30));
    QList<double> program;
    QList<double> ours;
    QList<double> theirs;
    for (int i = 0; i < kRounds; ++i) {
        const auto cost = CostOfRecorder(m_desktop, kSeconds);
        QVERIFY2(cost, "the program does not record");
        program << cost->program;
        ours << cost->all;
        theirs << CostOfWfRecorder(m_folder.filePath("other.mp4"), kSeconds).value_or(0);
        QVERIFY2(theirs.last() > 0, "wf-recorder does not record");
    }
    const double ratio = Least(ours) / Least(theirs);
    Row("Wayland: program, tool and ffmpeg / wf-recorder", Number(ratio), "<= 0.7", ratio <= 0.7);
    Row("  in 10 s, least of three", Number(Least(ours)) + " s, " + Number(Least(theirs)) + " s");
    const double share = 100 * Least(program) / kSeconds;
    Row("  the program's share of one processor", Number(share) + " %", "<= 0.5 %", share <= 0.5);
}

// The same picture through the desktop's portal and without it.
void WaylandBench::portalCost()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(30));
    const PortalSession session;
    session.Answer("echo HEADLESS-1");
    QList<double> portal;
    QList<double> direct;
    QList<double> theirs;
    for (int i = 0; i < kRounds; ++i) {
        const auto through = CostOfRecorder(m_desktop, kSeconds, "1");
        QVERIFY2(through && through->processes == 3, "nothing is recorded through the portal");
        const auto without = CostOfRecorder(m_desktop, kSeconds);
        QVERIFY2(without && without->processes == 2, "nothing is recorded without the portal");
        portal << through->all;
        direct << without->all;
        theirs << CostOfWfRecorder(m_folder.filePath("other.mp4"), kSeconds).value_or(0);
        QVERIFY2(theirs.last() > 0, "wf-recorder does not record");
    }
    const double ratio = Least(portal) / Least(theirs);
    Row("Wayland: through the portal / wf-recorder", Number(ratio), "<= 0.7", ratio <= 0.7);
    Row("  through the portal / without", Number(Least(portal) / Least(direct)));
    Row("  in 10 s, least of three: portal, without, wf-recorder",
        Number(Least(portal)) + ", " + Number(Least(direct)) + ", " + Number(Least(theirs)) + " s");
}

void WaylandBench::waylandFrames()
{
    TestPatternProcess pattern({"--beep", "1000@speaker"});
    QVERIFY2(pattern.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(60));
    Take take(m_folder.filePath("frames.mp4"), "0:1");
    QVERIFY(WaitUntil([&] { return take.HasPicture(); }));
    QVERIFY(WaylandTakes::WaitForSeconds(take, kSeconds));
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

// Returns false if something does not come.
bool WaylandBench::RecordForMinutes(Recorder& recorder, int minutes,
                                    QMap<qint64, Holding>& processes)
{
    constexpr qint64 minute = 60000;
    if (!recorder.Start() || !m_desktop.AtRest(Recorder::kTitle) ||
        !recorder.PressRecordUntilHidden()) {
        return false;
    }
    QElapsedTimer time;
    time.start();
    for (qint64 look = minute; look <= minutes * minute; look += minute / 6) {
        WaitUntil([&] { return time.hasExpired(look); }, minute + 10000);
        if (processes.isEmpty()) {
            processes = HoldingsOf(QList<qint64>{recorder.Pid()} + Descendants(recorder.Pid()));
        }
        Look(processes);
    }
    return recorder.ClickInStandIn(Recorder::kStop) && recorder.WaitForTool(minute);
}

void WaylandBench::waylandDrift()
{
    const int asked = qEnvironmentVariableIntValue("LUMENFOLD_LONG_MINUTES");
    const int minutes = asked == 0 ? 10 : std::max(2, asked);
    TestPatternProcess first(PunctualPattern(kComputer));
    TestPatternProcess second(PunctualPattern(kMicrophone));
    QVERIFY2(first.IsReady() && second.IsReady(), "the moving picture does not come");
    QVERIFY(SetRate(60));
    Recorder recorder(m_desktop);
    QMap<qint64, Holding> processes;
    QVERIFY2(RecordForMinutes(recorder, minutes, processes), "there is no recording");
    Row(QString("Wayland, a recording of %1 minutes").arg(minutes), {});
    PrintGrowth(processes, minutes);
    for (const Sounding& sounding : {kComputer, kMicrophone}) {
        const auto report = PatternReport(
            recorder.Recording(), 60000 * (1 + minutes),
            {"--at", QString("0,%1").arg(sounding.y), "--beep", QString::number(sounding.hertz)});
        if (sounding.y == 0) {
            PrintFrames(report);
        }
        PrintOffsets(report, sounding);
    }
}

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    WaylandBench bench;
    return RunMeasurements(bench, QCoreApplication::arguments().mid(1)); // only the named rows
}

#include "wayland_bench.moc"
