// Test patterns that flash and beep at the same moments, on both sound devices of the virtual
// desktop.
#pragma once

#include "tests/support/test_pattern_process.h"

#include <QProcess>
#include <QTest>

inline constexpr auto kFlashDistance = "0.6"; // seconds; distinguishes up to 300 ms early from late

struct Source
{
    QString name;   // the server's name of a source
    QString output; // an output whose sound it hears
    int hertz;
    int y; // of the pattern that flashes at the same time
};

inline const Source kSpeaker{"speaker.monitor", "speaker", 1000, 0};
inline const Source kMicrophone{"microphone", "mic_in", 1700, 100};
// Nobody has used these before. Without anything to play, the output runs two seconds ahead.
inline const Source kIdleSpeaker{"idle.monitor", "idle", 1000, 0};
inline const Source kIdleMicrophone{"headset", "voice", 1700, 100};

inline QStringList PatternOptions(const Source& source)
{
    return {"--geometry", QString("320x96+0+%1").arg(source.y),
            "--flash",    kFlashDistance,
            "--beep",     QString("%1@%2").arg(source.hertz).arg(source.output)};
}

// Another listener: the server takes seconds to start a source nobody has used yet.
class Listener
{
public:
    explicit Listener(const Source& source)
    {
        m_process.start("parec", {"--latency-msec=30", "--rate=8000", "--channels=1",
                                  "--format=s16le", "-d", source.name});
    }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;
    ~Listener()
    {
        m_process.terminate();
        m_process.waitForFinished();
    }

    // Whether it has received a second of sound.
    bool IsAwake()
    {
        m_nHeard += m_process.readAll().size();
        return m_nHeard >= 16000;
    }

private:
    QProcess m_process;
    qint64 m_nHeard = 0;
};

// Patterns for both devices, which are awake.
class Performance
{
public:
    bool IsReady()
    {
        return m_first.IsReady() && m_second.IsReady() &&
               QTest::qWaitFor([&] { return m_speaker.IsAwake() && m_microphone.IsAwake(); },
                               20000);
    }

private:
    TestPatternProcess m_first{PatternOptions(kSpeaker)};
    TestPatternProcess m_second{PatternOptions(kMicrophone)};
    Listener m_speaker{kSpeaker};
    Listener m_microphone{kMicrophone};
};
