#include "tests/support/files.h"

#include <QDir>
#include <QFile>

QByteArray Content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool Write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

bool WriteProgram(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size() &&
           file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QStringList FileNames(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
}

QMap<QString, QByteArray> Contents(const QString& folder)
{
    QMap<QString, QByteArray> contents;
    for (const QString& name : FileNames(folder)) {
        contents[name] = Content(folder + '/' + name);
    }
    return contents;
}
