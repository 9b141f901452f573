// A recording of a virtual screen by `tool` alone.
#pragma once

#include "tests/support/child_processes.h"
#include "tests/support/desktop.h"
#include "tests/support/own_screen.h"

#include <QProcess>
#include <QRegularExpression>

#include <csignal>

class ScreenRecording
{
public:
    ScreenRecording(const OwnScreen& screen, const QString& file,
                    const QString& colours = "yuv420p", const QString& devices = "0")
        : m_file(file)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", screen.Name());
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(TOOL_PROGRAM,
                        {"-f", "avfoundation", "-framerate", "30", "-i", devices, "-r", "29.97",
                         "-preset", "ultrafast", "-pix_fmt", colours, file});
    }
    ScreenRecording(const ScreenRecording&) = delete;
    ScreenRecording& operator=(const ScreenRecording&) = delete;
    ~ScreenRecording()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    // Waits until ffmpeg has reported this many frames.
    bool WaitForPictures(int count)
    {
        return WaitUntil([&] {
                   Listen();
                   auto found = QRegularExpression("frame= *(\\d+)").globalMatch(m_text);
                   int seen = 0;
                   while (found.hasNext()) {
                       seen = found.next().captured(1).toInt();
                   }
                   return seen >= count || !IsRunning();
               }) &&
               IsRunning();
    }
    // The frames still to come since ffmpeg's last report.
    bool WaitForMore(int count)
    {
        Listen();
        const auto last = m_text.lastIndexOf("frame=");
        return WaitForPictures(count +
                               m_text.mid(last + 6, 6).trimmed().section(' ', 0, 0).toInt());
    }
    bool WaitForEnd()
    {
        return WaitUntil([&] { return !IsRunning(); });
    }
    bool Quit()
    {
        m_process.write("q\r\n");
        return WaitForEnd() && m_process.exitCode() == 0;
    }
    // To `tool`.
    void Signal(int number) { kill(static_cast<pid_t>(m_process.processId()), number); }
    bool IsRunning()
    {
        m_process.waitForFinished(0);
        return m_process.state() != QProcess::NotRunning;
    }

    // 0 if there is none.
    pid_t Ffmpeg() const { return ChildrenOf(m_process.processId()).value(0); }
    QString Text()
    {
        Listen();
        return m_text;
    }
    QString File() const { return m_file; }

private:
    void Listen() { m_text += QString::fromUtf8(m_process.readAll()); }

    QProcess m_process;
    QString m_file;
    QString m_text;
};
