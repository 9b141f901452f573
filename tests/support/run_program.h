#pragma once

#include <QByteArray>
#include <QStringList>

// The output and exit code of a program; the code is -1 if it did not exit by itself.
struct Outcome
{
    int code = -1;
    QByteArray output;
    QByteArray error;
};

// Runs a program with its standard input closed, for two minutes at most.
Outcome RunProgram(const QString& program, const QStringList& arguments,
                   const QString& directory = {}, int milliseconds = 120000);
