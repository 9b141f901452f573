#include "bench/wayland_cost.h"

#include "tests/support/child_processes.h"
#include "tests/support/desktop.h"
#include "tests/support/measure.h"
#include "tests/support/recorder.h"
#include "tests/support/recording_file.h"

#include <QFileInfo>
#include <QProcess>

#include <csignal>

namespace {

constexpr int kTries = 3;
constexpr auto kComputerSounds = "0:1"; // of `tool`

// A list that has opened is not among the windows that sway tells of. A key that is too early
// changes nothing, as does a click, so the outcome is checked.
bool RecordsComputerSounds(Desktop& desktop, Recorder& recorder)
{
    if (!recorder.Start() || !desktop.AtRest(Recorder::kTitle)) {
        return false;
    }
    recorder.Click("home.record");
    recorder.Click("record.audio");
    desktop.Press({"Home", "Down", "Return"});
    if (!recorder.PressRecordUntilHidden() ||
        !WaitUntil([&] { return QFileInfo(recorder.Recording()).size() > 0; })) {
        return false;
    }
    const pid_t tool = ChildrenOf(recorder.Pid()).value(0);
    return CommandLine(tool).contains(kComputerSounds);
}

std::optional<RecorderCost> CostOfRecording(Recorder& recorder, int seconds)
{
    WaitFor(1000);
    const QList<qint64> program{recorder.Pid()};
    const QList<qint64> others = Descendants(recorder.Pid());
    const double programBefore = CpuSeconds(program);
    const double othersBefore = CpuSeconds(others);
    WaitFor(seconds * 1000);
    RecorderCost cost;
    cost.program = CpuSeconds(program) - programBefore;
    cost.all = cost.program + CpuSeconds(others) - othersBefore;
    cost.processes = others.size();
    const bool good = recorder.ClickInStandIn(Recorder::kStop) && recorder.WaitForTool() &&
                      ReadRecording(recorder.Recording()).seconds > seconds;
    return good ? std::optional(cost) : std::nullopt;
}

} // namespace

std::optional<RecorderCost> CostOfRecorder(Desktop& desktop, int seconds, const QString& portal)
{
    for (int i = 0; i < kTries; ++i) {
        Recorder recorder(desktop);
        recorder.SetEnvironment("LUMENFOLD_USE_PORTAL", portal);
        if (RecordsComputerSounds(desktop, recorder)) {
            return CostOfRecording(recorder, seconds);
        }
    }
    return std::nullopt;
}

std::optional<double> CostOfWfRecorder(const QString& file, int seconds)
{
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start("wf-recorder",
                  {"-o", "HEADLESS-1", "-c", "libx264", "-p", "preset=ultrafast", "-p", "g=59",
                   "-p", "crf=23", "-t", "-D", "--audio=speaker.monitor", "-f", file});
    if (!process.waitForStarted()) {
        return std::nullopt;
    }
    WaitFor(1000);
    const double before = CpuSeconds({process.processId()});
    WaitFor(seconds * 1000);
    const double cost = CpuSeconds({process.processId()}) - before;
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    const bool good = process.waitForFinished(10000) && ReadRecording(file).seconds > seconds;
    QFile::remove(file);
    return good ? std::optional(cost) : std::nullopt;
}
