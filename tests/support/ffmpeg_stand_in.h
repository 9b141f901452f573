// A script in the place of ffmpeg, for jobs of `tool` that fail, wait or say odd things.
#pragma once

#include "tests/support/files.h"
#include "tests/support/tool_movies.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <functional>

// Waits without handling events.
inline bool WaitFor(const std::function<bool()>& condition, int milliseconds = 20000)
{
    const QDeadlineTimer patience(milliseconds);
    while (!condition()) {
        if (patience.hasExpired()) {
            return false;
        }
        QThread::msleep(5);
    }
    return true;
}

inline bool HasEnded(QProcess& process)
{
    return process.state() == QProcess::NotRunning || process.waitForFinished();
}

// Waits for the end.
struct End
{
    explicit End(QProcess& process)
    {
        const bool ended = HasEnded(process) && process.exitStatus() == QProcess::NormalExit;
        code = ended ? process.exitCode() : -1;
        text = process.readAll();
    }
    int code;
    QByteArray text;
};

// Has a folder of its own with a movie, and a folder "out" for results.
class FfmpegStandIn
{
public:
    // The parts of a script: write the whole movie, and wait for Go().
    static constexpr auto kWrite = "cat \"$MOVIE\" >\"$OUT\"\n";
    static constexpr auto kWait = "while [ ! -e \"$HERE/go\" ]; do sleep 0.01; done\n";

    FfmpegStandIn() { QDir(m_folder.path()).mkdir("out"); }
    FfmpegStandIn(const FfmpegStandIn&) = delete;
    FfmpegStandIn& operator=(const FfmpegStandIn&) = delete;
    ~FfmpegStandIn()
    {
        qunsetenv("LUMENFOLD_FFMPEG");
        Go(); // what a failed test has left waiting
        WaitFor([this] { return AllEnded(); }, 5000);
    }

    QString Path(const QString& name) const { return m_folder.filePath(name); }
    QString Movie() const { return Path("movie.mp4"); }
    QStringList Results() const { return FileNames(Path("out")); }

    // Returns what went wrong, or "".
    QByteArray MakeTheMovie() const
    {
        return MakeMovie(PictureInput(4) + ToneInput(4) + PlainCodecs() + QStringList{Movie()});
    }

    // `tool` uses this bash script from now on. In it, $OUT is the output.
    bool Use(const QByteArray& script)
    {
        const QByteArray begin = "#!/bin/bash\n"
                                 "[[ $* == *-version* ]] && exec ffmpeg -version\n"
                                 "HERE='" +
                                 QFile::encodeName(m_folder.path()) +
                                 "'\n"
                                 "MOVIE=\"$HERE/movie.mp4\"\n"
                                 "OUT=\"${!#}\"\n"
                                 "echo $$ >>\"$HERE/processes\"\n"
                                 "touch \"$HERE/started\"\n";
        qputenv("LUMENFOLD_FFMPEG", QFile::encodeName(Path("ffmpeg")));
        return WriteProgram(Path("ffmpeg"), begin + script);
    }
    bool HasStarted() const { return QFile::exists(Path("started")); }
    void Go() const { Write(Path("go"), ""); }
    // Whether all processes of the script have ended that wrote their number to "processes".
    bool AllEnded() const
    {
        const QList<QByteArray> lines = Content(Path("processes")).split('\n');
        return std::all_of(lines.begin(), lines.end(), [](const QByteArray& line) {
            return line.isEmpty() || kill(line.toInt(), 0) != 0;
        });
    }

    // The recorder's command for a cut of the whole movie.
    QStringList CutArguments(const QString& name = "cut.mp4") const
    {
        return {"-i", Movie(), "-ss", "0", "-t", "4", "-codec", "copy", Path("out/" + name)};
    }

private:
    QTemporaryDir m_folder;
};
