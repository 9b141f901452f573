#pragma once

#include "tests/support/tool_movies.h"

#include <QTemporaryDir>
#include <QTest>

// A test with movies in a folder of its own.
class MovieTest : public QObject
{
protected:
    QString Path(const QString& name) const { return m_folder.filePath(name); }
    // Makes a movie with these options of ffmpeg, or reports a failure.
    void Make(const QString& name, const QStringList& options) const
    {
        const QByteArray problem = MakeMovie(options + QStringList(Path(name)));
        QVERIFY2(problem.isEmpty(), problem);
    }
    QByteArray Bytes(const QString& name) const { return Content(Path(name)); }
    void MakeFile(const QString& name, const QByteArray& bytes) const
    {
        QVERIFY2(Write(Path(name), bytes), qPrintable(name + " cannot be written"));
    }

    QTemporaryDir m_folder;
};
