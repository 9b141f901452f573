#include "jobs/path_argument.h"

QString CommandPath(const QString& path)
{
    QString text = path;
    return text.remove('"').remove(QChar::Null);
}

QString Quoted(const QString& path)
{
    return '"' + CommandPath(path) + '"';
}
