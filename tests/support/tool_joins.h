// Joins requested like the recorder does, command by command, made by `tool` with the real ffmpeg.
#pragma once

#include "tests/support/tool_movies.h"

#include <QTemporaryDir>

// A folder with movies to join and what becomes of them.
class JoinFolder
{
public:
    QString Path(const QString& name) const { return m_folder.filePath(name); }

    // Makes each of these movies, which have fixed names, unless it is there. Returns what went
    // wrong, or "".
    QByteArray Make(const QStringList& names) const;

    // The recorder's first stage: writes PARTS/NUMBER.ts. Returns its name.
    QString Convert(const QString& source, const QString& parts, int number) const;
    // The second stage. Result() is the movie that it makes.
    QStringList JoinArguments(const QStringList& parts);
    Outcome Join(const QStringList& parts);
    // Both stages, with the parts in this folder. The movies are made if needed.
    Outcome Merge(const QStringList& sources, const QString& parts = "parts");
    QString Result() const { return m_result; }

    // Checks that the result is as long as all sources together and every packet can be decoded.
    // Returns what is wrong, or "".
    QByteArray FaultIn(const QStringList& sources) const;
    // Checks that each beep of the result from then on coincides with a flash. In seconds.
    QByteArray FaultInStep(double from) const;

    // The length in seconds that the recorder would show.
    static double Duration(const QString& path);

private:
    QTemporaryDir m_folder;
    QString m_result;
    int m_results = 0;
};
