// The table the benchmarks print: one row per figure, with its target if it has one.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

// Prints a row. Without a target the figure is only shown.
void Row(const QString& what, const QString& value, const QString& target = {}, bool met = true);

QString Number(double value, int digits = 2);

// Runs the measurements, which are private slots like those of a test, and prints the table.
// Returns the exit code: 1 if a measurement failed.
int RunMeasurements(QObject& measurements, const QStringList& only = {});
