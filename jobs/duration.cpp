#include "jobs/duration.h"

#include "jobs/job_report.h"
#include "jobs/path_argument.h"

#include <QStringList>

QString ProbeCommand(const QString& tool, const QString& path)
{
    return tool + " -i " + Quoted(path);
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
    // A number of hours that does not fit into an int is invalid, and its seconds might overflow.
    return fields.value(0).toInt() * 3600LL + fields.value(1).toInt() * 60LL +
           fields.value(2).toInt();
}
