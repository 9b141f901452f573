#include "jobs/recording_watch.h"

#include "jobs/recording_status.h"
#include "jobs/tool_reason.h"

namespace {

constexpr int kCheckMs = 1000;
constexpr int kStillChecks = 10; // checks, not time: the machine may have slept
// `tool` repeats it while the desktop asks the user, who may take any time.
constexpr auto kWaitingForUser = "Waiting for the desktop";
constexpr qsizetype kKeptOutput = 16384;

// Whether `tool` says, as shells do, that a signal has ended ffmpeg.
bool IsSignalled(int exitCode)
{
    constexpr int base = 128;
    constexpr int highest = 64;
    return exitCode > base && exitCode <= base + highest;
}

} // namespace

RecordingWatch::RecordingWatch(QProcess* tool) : QObject(tool)
{
    connect(tool, SIGNAL(finished(int, QProcess::ExitStatus)), this,
            SLOT(End(int, QProcess::ExitStatus)));
    connect(&m_timer, SIGNAL(timeout()), this, SLOT(CheckGrowth()));
    m_timer.setInterval(kCheckMs);
}

void RecordingWatch::Begin(const QString& file)
{
    m_stage = Stage::Recording;
    m_strFile = file;
    m_strOutput.clear();
    m_n64Size = 0;
    m_nStillChecks = 0;
    m_bHasReported = false;
    m_timer.start();
}

void RecordingWatch::ReportNoStart(const QString& reason)
{
    if (m_stage == Stage::Recording) {
        Forget();
    }
    Q_EMIT failed(StartFailureText(reason));
}

void RecordingWatch::GoOn()
{
    m_stage = Stage::Recording;
    m_timer.start();
}

void RecordingWatch::Stop()
{
    m_timer.stop();
    if (m_stage == Stage::Recording) {
        m_stage = Stage::Stopping;
    }
}

void RecordingWatch::Forget()
{
    m_timer.stop();
    m_stage = Stage::None;
}

void RecordingWatch::AddOutput(const QString& text)
{
    if (text.contains(kWaitingForUser)) {
        m_nStillChecks = 0;
    }
    m_strOutput = (m_strOutput + text).right(kKeptOutput);
}

// A file whose folder does not answer does not grow.
void RecordingWatch::CheckGrowth()
{
    const qint64 size = m_size.Ask(m_strFile).value_or(0);
    m_nStillChecks = size == m_n64Size ? m_nStillChecks + 1 : 0;
    m_n64Size = size;
    if (m_nStillChecks == kStillChecks && !m_bHasReported) {
        Report(StandstillText(kStillChecks * kCheckMs / 1000, size > 0 ? m_strFile : QString()));
    }
}

void RecordingWatch::End(int exitCode, QProcess::ExitStatus status)
{
    const Stage stage = m_stage;
    Forget();
    if (stage == Stage::None) {
        return;
    }
    const bool killed = status == QProcess::CrashExit || IsSignalled(exitCode);
    const QString said = ReasonIn(m_strOutput, killed);
    const qint64 size = SlowQuestion<qint64>(FileBytes).Ask(m_strFile).value_or(m_n64Size);
    if (stage == Stage::Stopping) {
        if (size == 0 && !m_bHasReported) {
            Report(NoFileText(m_strFile, said));
        }
        return;
    }
    const QString reason = said.isEmpty() ? UnsaidReason(killed, exitCode) : said;
    if (size > 0) {
        Report(EndText(reason, m_strFile));
    } else {
        Report(m_n64Size > 0 ? EndText(reason, {}) : StartFailureText(reason));
    }
}

void RecordingWatch::Report(const QString& message)
{
    m_bHasReported = true;
    Q_EMIT failed(message);
}
