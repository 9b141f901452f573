#include "tests/support/movie_cache.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryFile>

#include <cstdio>

MovieCache::MovieCache(const QStringList& arguments)
    : m_output(arguments.value(arguments.size() - 1))
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    const QFileInfo ffmpeg(QStandardPaths::findExecutable("ffmpeg"));
    hash.addData(ffmpeg.canonicalFilePath().toUtf8() +
                 QByteArray::number(ffmpeg.lastModified().toMSecsSinceEpoch()));
    for (qsizetype i = 0; i + 1 < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        QFile input(argument);
        if (i > 0 && arguments[i - 1] == "-i" && input.exists()) {
            if (!input.open(QIODevice::ReadOnly) || !hash.addData(&input)) {
                return;
            }
            continue;
        }
        if (argument.contains('/') && !argument.contains("://") && QFileInfo::exists(argument)) {
            return; // a second output or a list of files
        }
        hash.addData(argument.toUtf8() + '\0');
    }
    // A list, and possibly a filter, names further files.
    if (!arguments.contains("concat") && arguments.filter("movie=").isEmpty()) {
        m_kept = QString("%1/%2.%3")
                     .arg(MOVIE_CACHE, hash.result().toHex(), QFileInfo(m_output).suffix());
    }
}

bool MovieCache::Fetch() const
{
    if (m_kept.isEmpty() || !QFile::exists(m_kept)) {
        return false;
    }
    QFile::remove(m_output);
    return QFile::copy(m_kept, m_output);
}

void MovieCache::Keep() const
{
    if (m_kept.isEmpty() || !QDir().mkpath(MOVIE_CACHE)) {
        return;
    }
    // Other processes see all of it or nothing.
    QTemporaryFile copy(MOVIE_CACHE "/XXXXXX");
    copy.setAutoRemove(false);
    QFile movie(m_output);
    if (copy.open() && movie.open(QIODevice::ReadOnly) &&
        copy.write(movie.readAll()) == movie.size() && copy.flush()) {
        std::rename(qPrintable(copy.fileName()), qPrintable(m_kept));
    } else {
        copy.remove();
    }
}
