// Figures about running programs, taken from outside.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

struct Memory
{
    double rss = 0; // MiB
    double pss = 0; // MiB, shared pages counted in parts
};

// Milliseconds from the start of this program until its window is seen; ends it then. Negative
// when no window comes.
double StartTime(const QString& program, const QStringList& arguments, const QString& folder);

// What a running program holds.
Memory MemoryOf(qint64 pid);

// Seconds of processor time that these processes used until now, ended children included.
double CpuSeconds(const QList<qint64>& pids);

// This process's children, and theirs.
QList<qint64> Descendants(qint64 pid);

QStringList CommandLine(qint64 pid);

double Median(QList<double> values);
