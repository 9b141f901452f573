// What the benchmarks print: a line a figure, with its target where it has one.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

// A figure; without a target it is only told.
void Row(const QString& what, const QString& value, const QString& target = {}, bool met = true);

QString Number(double value, int digits = 2);

// Runs the measurements, private slots as those of a test, and prints the table. The exit code: 1
// when one of them could not be taken.
int RunMeasurements(QObject& measurements, const QStringList& only = {});
