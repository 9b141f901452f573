// A recording by the real `tool` that a test can end in any way.
#pragma once

#include "tests/support/child_processes.h"
#include "tests/support/recorder_command.h"
#include "tests/support/tool_movies.h"

#include <QFile>
#include <QFileInfo>
#include <QList>
#include <QProcess>

#include <csignal>
#include <unistd.h>

// A recording by `tool` in a process group of its own, with a shell in place of the recorder.
// `devices`: "SCREEN" or "SCREEN:SOUND"; a second one, after a blank, adds its sound.
class Take
{
public:
    Take(const QString& path, const QString& devices, const QStringList& environment = {},
         const QString& pixels = "yuv420p")
        : m_path(path)
    {
        m_process.setChildProcessModifier([] { setpgid(0, 0); });
        QProcessEnvironment all = QProcessEnvironment::systemEnvironment();
        for (const QString& one : environment) {
            all.insert(one.section('=', 0, 0), one.section('=', 1));
        }
        m_process.setProcessEnvironment(all);
        m_process.start(
            "/bin/sh",
            QStringList{"-c", "\"$@\" 2>\"$0.log\"; exit $?", path, TOOL_PROGRAM} +
                RecorderCommand(devices.split(' '), path).replaceInStrings("yuv420p", pixels));
    }
    Take(const Take&) = delete;
    Take& operator=(const Take&) = delete;
    ~Take()
    {
        EndAll(SIGKILL);
        m_process.waitForFinished();
    }

    const QString& Path() const { return m_path; }
    bool HasPicture() const { return QFileInfo(m_path).size() > 0; }
    QByteArray Text() const
    {
        QFile log(m_path + ".log");
        return log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    }
    void Type(const QByteArray& keys) { m_process.write(keys); }
    bool WaitForEnd() { return HasEnded() || m_process.waitForFinished(); }
    bool HasEnded() const { return m_process.state() == QProcess::NotRunning; }
    // Seconds ffmpeg has muxed, according to its last progress line.
    double Taken() const
    {
        const QByteArray text = Text();
        return DurationIn("  Duration: " + text.mid(text.lastIndexOf("time=") + 5, 11));
    }
    int ExitCode() const { return m_process.exitCode(); }

    // The recorder, `tool` and ffmpeg.
    void EndAll(int signal) const
    {
        if (m_process.processId() > 0) {
            kill(-static_cast<pid_t>(m_process.processId()), signal);
        }
    }
    // The shell and, as with the real one, the pipe to type into.
    void EndRecorder(int signal = SIGKILL)
    {
        kill(static_cast<pid_t>(m_process.processId()), signal);
        StopTyping();
    }
    // Returns false if there is no such process.
    bool EndTool(int signal) const { return End(Tool(), signal); }
    bool EndFfmpeg(int signal) const { return End(Ffmpeg(), signal); }

    // 0 if there is none.
    pid_t Tool() const { return ChildrenOf(m_process.processId()).value(0); }
    pid_t Ffmpeg() const { return ChildrenOf(Tool()).value(0); }
    // All processes that the recorder has started, and those started by these.
    QList<pid_t> Processes() const
    {
        QList<pid_t> all = ChildrenOf(m_process.processId());
        for (qsizetype i = 0; i < all.size(); ++i) {
            all += ChildrenOf(all[i]);
        }
        return all;
    }
    // As when the recorder has ended.
    void StopTyping() { m_process.closeWriteChannel(); }

private:
    static bool End(pid_t process, int signal) { return process > 0 && kill(process, signal) == 0; }

    QString m_path;
    QProcess m_process;
};
