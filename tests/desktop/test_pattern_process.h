// The moving picture in the screen's upper left corner, and a different tone on each sound device.
#pragma once

#include <QProcess>

class TestPatternProcess
{
public:
    static constexpr int kSpeakerTone = 600;
    static constexpr int kMicrophoneTone = 1400;

    TestPatternProcess()
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(TEST_PATTERN, {"--geometry", "640x64+0+0", "--hum",
                                       QString("%1@speaker").arg(kSpeakerTone), "--hum",
                                       QString("%1@mic_in").arg(kMicrophoneTone)});
    }
    TestPatternProcess(const TestPatternProcess&) = delete;
    TestPatternProcess& operator=(const TestPatternProcess&) = delete;
    ~TestPatternProcess()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    // Waits until the picture stands.
    bool IsReady()
    {
        return m_process.waitForReadyRead() && m_process.readAll().startsWith("ready");
    }

private:
    QProcess m_process;
};
