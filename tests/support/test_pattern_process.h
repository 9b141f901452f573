// Shows the moving test pattern in the upper left corner of the screen and plays a different tone
// on each device, unless told otherwise.
#pragma once

#include <QProcess>

class TestPatternProcess
{
public:
    static constexpr int kSpeakerTone = 600;
    static constexpr int kMicrophoneTone = 1400;

    explicit TestPatternProcess(const QStringList& sound = {
                                    "--hum", QString("%1@speaker").arg(kSpeakerTone), "--hum",
                                    QString("%1@mic_in").arg(kMicrophoneTone)})
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(TEST_PATTERN, QStringList{"--geometry", "640x64+0+0"} + sound);
    }
    TestPatternProcess(const TestPatternProcess&) = delete;
    TestPatternProcess& operator=(const TestPatternProcess&) = delete;
    ~TestPatternProcess()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    // Waits until the pattern is visible.
    bool IsReady()
    {
        return m_process.waitForReadyRead() && m_process.readAll().startsWith("ready");
    }

private:
    QProcess m_process;
};
