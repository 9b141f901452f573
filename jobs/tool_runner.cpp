#include "jobs/tool_runner.h"

#include "jobs/path_argument.h"

#include <QCoreApplication>
#include <QDebug>
#include <QEventLoop>
#include <QProcess>
#include <QTimer>

#include <utility>

namespace {

constexpr int kEndMs = 500;   // for a tool to finish its file when the program ends
constexpr int kLastMs = 2000; // of a wait; `tool` ends a second before it, while a job goes on

// A wait for the tool, on the stack of whoever waits.
class ToolWait
{
public:
    explicit ToolWait(QProcess& process) : m_process(process)
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(kToolWaitMs);
        EndWithIt(m_loop);
    }
    ~ToolWait() { innermost = m_outer; }
    Q_DISABLE_COPY_MOVE(ToolWait)

    // Returns false if another than the tool or the timer ended it: the program.
    bool Wait()
    {
        if (!IsOver()) {
            m_loop.exec();
        }
        return IsOver();
    }

    bool IsOver() const { return m_process.state() == QProcess::NotRunning || !m_timer.isActive(); }

    bool IsFor(const QProcess& process) const { return &m_process == &process; }
    bool IsEnding() const { return m_timer.remainingTime() < kLastMs; }

    void EndWithIt(QEventLoop& loop) const
    {
        QObject::connect(&m_process, SIGNAL(finished(int, QProcess::ExitStatus)), &loop,
                         SLOT(quit()));
        QObject::connect(&m_timer, SIGNAL(timeout()), &loop, SLOT(quit()));
    }

    // Ends all waits for this process.
    static void Leave(const QProcess& process)
    {
        for (ToolWait* wait = innermost; wait != nullptr; wait = wait->m_outer) {
            if (wait->IsFor(process)) {
                wait->m_timer.stop();
                wait->m_loop.quit();
            }
        }
    }

    static inline ToolWait* innermost = nullptr;

private:
    QProcess& m_process;
    QTimer m_timer;
    QEventLoop m_loop;
    ToolWait* m_outer = std::exchange(innermost, this);
};

void EndTool(QProcess& process)
{
    process.terminate();
    if (!process.waitForFinished(kEndMs)) {
        process.kill();
        process.waitForFinished(kEndMs);
    }
}

} // namespace

QString ToolPrefix()
{
    return Quoted(QCoreApplication::applicationDirPath() + "/tool");
}

// Blocks, for as long as it takes to execute a program.
bool StartTool(QProcess& process, const QString& command)
{
    qDebug() << command;
    process.startCommand(command, QIODevice::ReadWrite);
    return process.waitForStarted(kToolWaitMs);
}

bool RunTool(QProcess& process, const QString& command)
{
    StartTool(process, command);
    const bool goesOn = ToolWait(process).Wait();
    if (!goesOn) {
        EndTool(process);
    }
    return goesOn;
}

void LeaveTool(QProcess& process)
{
    process.kill();
    process.waitForFinished(kEndMs);
    ToolWait::Leave(process);
}

bool IsToolWaitEnding(const QProcess& process)
{
    const ToolWait* wait = ToolWait::innermost;
    return wait != nullptr && wait->IsFor(process) && wait->IsEnding();
}

void ExecUntilToolEnds(QEventLoop& loop)
{
    const ToolWait* wait = ToolWait::innermost;
    if (wait != nullptr) {
        wait->EndWithIt(loop);
    }
    if (wait == nullptr || !wait->IsOver()) {
        loop.exec();
    }
}

void AskToolToQuit(QProcess& process)
{
    if (process.isOpen()) {
        process.write("q\r\n", 3);
    }
}

QString ReadToolText(QProcess& process)
{
    if (!process.isOpen()) { // never started: the cut reads another job's process
        return {};
    }
    // The pointer form stops at a zero byte; the QByteArray form would not.
    return QString::fromLatin1(process.readAllStandardOutput().constData());
}
