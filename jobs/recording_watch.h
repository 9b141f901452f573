#pragma once

#include "jobs/free_space.h"
#include "jobs/slow_question.h"

#include <QProcess>
#include <QString>
#include <QTimer>

// Watches the tool's process during a recording and reports each failure once: the tool did not
// start or ended by itself, its file does not grow, or is missing after the stop.
class RecordingWatch : public QObject
{
    Q_OBJECT

public:
    /// Becomes a child of the process.
    explicit RecordingWatch(QProcess* tool);

    /// A recording to `file` begins: call it right before the tool is started.
    void Begin(const QString& file);

    /// The recording that was asked for does not begin. A tool that is finishing the file of the
    /// recording before it stays watched.
    void ReportNoStart(const QString& reason);

    /// A stop is taken back: the tool has not noticed it and goes on with its file.
    void GoOn();

    /// The user has stopped the recording; the tool ends later.
    void Stop();

    /// Nothing will be reported any more.
    void Forget();

    /// Keeps the end of what the tool prints, which may hold the reason of a failure.
    void AddOutput(const QString& text);

    /// A sentence for the user. The recording's states do not change until the user stops it.
    Q_SIGNAL void failed(const QString& message);

private Q_SLOTS:
    void CheckGrowth();
    void End(int exitCode, QProcess::ExitStatus status);

private:
    enum class Stage { None, Recording, Stopping };

    void Report(const QString& message);

    Stage m_stage = Stage::None;
    QString m_strFile;
    QString m_strOutput; // its end
    SlowQuestion<qint64> m_size{FileBytes};
    qint64 m_n64Size = 0;        // of the file when it was last looked at
    int m_nStillChecks = 0;      // since it last grew
    bool m_bHasReported = false; // a failure of this recording
    QTimer m_timer;
};
