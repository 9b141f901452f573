// Measures running programs from outside.
#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

struct Memory
{
    double rss = 0; // MiB
    double pss = 0; // MiB, shared pages counted proportionally
};

// Starts the program and measures the milliseconds until its window is visible, then ends it.
// Returns a negative number if no window appears.
double StartTime(const QString& program, const QStringList& arguments, const QString& folder);

// The memory of a running program.
Memory MemoryOf(qint64 pid);

// What a running program has held at each look, in MiB.
struct Holding
{
    QString name;
    QList<double> memory;
    // From the first look to the worst one.
    double Growth() const;
};

QMap<qint64, Holding> HoldingsOf(const QList<qint64>& pids);
void Look(QMap<qint64, Holding>& processes);

// Processor seconds these processes have used, including children that have ended.
double CpuSeconds(const QList<qint64>& pids);

// The seconds each of these processes was runnable but had no processor.
QMap<qint64, double> WaitSeconds(const QList<qint64>& pids);

// All descendants of this process.
QList<qint64> Descendants(qint64 pid);

// The processes that run this program, whoever started them.
QList<qint64> ProcessesOf(const QString& program);

QStringList CommandLine(qint64 pid);

double Median(QList<double> values);

// Lets time pass during a measurement.
void WaitFor(int milliseconds);
