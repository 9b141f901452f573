#pragma once

#include "tests/support/ffmpeg_stand_in.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <memory>

inline const QByteArray kWrite = FfmpegStandIn::kWrite;
inline const QByteArray kWait = FfmpegStandIn::kWait;

inline bool TellsFailure(const QByteArray& text)
{
    return text.contains("No such file") || text.contains("Invalid data");
}

// A test of jobs of `tool`, with a script in the place of ffmpeg.
class JobTest : public QObject
{
protected:
    void Prepare()
    {
        m_ffmpeg = std::make_unique<FfmpegStandIn>();
        const QByteArray problem = m_ffmpeg->MakeTheMovie();
        QVERIFY2(problem.isEmpty(), problem);
    }
    void Finish()
    {
        Go(); // what a failed test has left waiting
        QVERIFY2(WaitFor([this] { return AllEnded(); }), "ffmpeg goes on");
        m_ffmpeg.reset();
    }
    QString Path(const QString& name) const { return m_ffmpeg->Path(name); }
    QStringList Files() const { return m_ffmpeg->Results(); }
    void UseFfmpeg(const QByteArray& script) const { QVERIFY(m_ffmpeg->Use(script)); }
    void Go() const { m_ffmpeg->Go(); }
    bool AllEnded() const { return m_ffmpeg->AllEnded(); }
    QStringList CutArguments(const QString& name = "cut.mp4") const
    {
        return m_ffmpeg->CutArguments(name);
    }
    QByteArray Movie() const { return Content(m_ffmpeg->Movie()); }
    // Starts `tool` and waits until ffmpeg runs.
    std::unique_ptr<QProcess> Start(const QString& tool, const QStringList& arguments) const
    {
        auto process = std::make_unique<QProcess>();
        process->setProcessChannelMode(QProcess::MergedChannels);
        process->start(tool, arguments);
        if (!process->waitForStarted() || !WaitFor([this] { return m_ffmpeg->HasStarted(); })) {
            qWarning("ffmpeg does not start: %s", process->readAll().constData());
        }
        return process;
    }
    std::unique_ptr<QProcess> StartCut(const QString& tool = TOOL_PROGRAM) const
    {
        return Start(tool, CutArguments());
    }
    // While ffmpeg is silent, the recorder reads often enough to pass on a cancel, and nothing that
    // means anything to it.
    static void ExpectHarmlessChunks(QProcess& process, int fewest)
    {
        QElapsedTimer time;
        time.start();
        int chunks = 0;
        QByteArray text;
        while (time.elapsed() < 1500 && process.waitForReadyRead(1000)) {
            text += process.readAll();
            ++chunks;
        }
        QVERIFY2(chunks >= fewest, qPrintable(QString("%1 chunks in 1.5 s").arg(chunks)));
        QVERIFY2(!text.contains("frame=") && !TellsFailure(text), text);
    }

    std::unique_ptr<FfmpegStandIn> m_ffmpeg;
};
