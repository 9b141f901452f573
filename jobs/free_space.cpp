#include "jobs/free_space.h"

#include "util/disk.h"

#include <QByteArray>
#include <QFileInfo>

quint64 FreeBytes(const QString& directory)
{
    QByteArray path = directory.toLatin1(); // a copy: it is cut in place to the parent found
    unsigned int high = 0;
    unsigned int low = 0;
    rsb_getFreeSpace(path.data(), static_cast<int>(path.size()), &high, &low);
    return (static_cast<quint64>(high) << 32U) | low;
}

qint64 FileBytes(const QString& path)
{
    const QFileInfo file(path);
    return file.exists() ? file.size() : 0;
}
