#include "bench/table.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {
int missed = 0;
}

void Row(const QString& what, const QString& value, const QString& target, bool met)
{
    missed += met ? 0 : 1;
    std::printf("%-58s %-26s %-14s %s\n", qPrintable(what), qPrintable(value), qPrintable(target),
                target.isEmpty() ? "" : (met ? "PASS" : "MISS"));
    std::fflush(stdout);
}

QString Number(double value, int digits)
{
    return QString::number(value, 'f', digits);
}

int RunMeasurements(QObject& measurements, const QStringList& only)
{
    std::printf("%-58s %-26s %-14s\n", "What", "Measured", "Target");
    const QTemporaryDir folder;
    const QString log = folder.filePath("log");
    if (QTest::qExec(&measurements, QStringList{"bench", "-o", log + ",txt"} + only) != 0) {
        QFile file(log);
        if (file.open(QIODevice::ReadOnly)) {
            std::fputs(file.readAll().constData(), stderr);
        }
        return 1;
    }
    std::printf("%s\n",
                missed == 0 ? "All targets met." : qPrintable(QString("%1 missed.").arg(missed)));
    return 0;
}
