#include "jobs/folder_scan.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>

#include <algorithm>
#include <cwchar>

void CopyWide(const QString& text, wchar_t* out, qsizetype size)
{
    const std::wstring wide = text.toStdWString();
    const auto length = std::min(wide.size(), static_cast<std::size_t>(size - 1));
    std::copy_n(wide.data(), length, out);
    out[length] = L'\0';
}

void TraverseFolder(QString dir, QVector<_FILE_INFO_>& files)
{
    if (!dir.endsWith('/')) {
        dir += '/';
    }
    qDebug() << dir;
    for (const QFileInfo& entry : QDir(dir).entryInfoList()) {
        if (!entry.isFile() || entry.suffix().compare("MP4", Qt::CaseInsensitive) != 0) {
            continue;
        }
        const QString modified = entry.lastModified().toString("yyyy-MM-dd hh:mm:ss");
        qDebug() << modified;
        _FILE_INFO_ file;
        file.llSize = entry.size();
        CopyWide(modified, file.szModifyTime);
        CopyWide(entry.fileName(), file.szFileName);
        files.append(file);
    }
}

int VectorCmp(const _FILE_INFO_& a,
              _FILE_INFO_ b) // NOLINT(performance-unnecessary-value-param): as callers know it
{
    return wcscasecmp(a.szModifyTime, b.szModifyTime) > 0 ? 1 : 0;
}

QVector<_FILE_INFO_> NewestFirst(const QString& dir)
{
    QVector<_FILE_INFO_> files;
    TraverseFolder(dir, files);
    std::sort(files.begin(), files.end(), VectorCmp);
    return files;
}
