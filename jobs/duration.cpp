#include "jobs/duration.h"

#include "jobs/job_report.h"

#include <QStringList>

QString ProbeCommand(const QString& tool, const QString& path)
{
    return tool + " -i \"" + path + '"';
}

std::string FindDuration(const QString& output)
{
    const QLatin1String marker(kDurationMarker);
    const qsizetype found = output.indexOf(marker);
    return found < 0 ? std::string()
                     : output.mid(found + marker.size(), 8).toLatin1().toStdString();
}

long long DurationSeconds(const QString& text)
{
    const QStringList fields = text.split(':');
    return fields.value(0).toLongLong() * 3600 + fields.value(1).toLongLong() * 60 +
           fields.value(2).toLongLong();
}
