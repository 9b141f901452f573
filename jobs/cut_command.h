#pragma once

#include <QString>

// The command line of a cut and the name of its file.

/// Where a cut of `source` goes: in `directory`, under the source's name with "Cut_" before it.
QString CutDestination(const QString& directory, const QString& source);

/// The whole command line: `source` from second `start` to second `end`, copied without
/// re-encoding. An end before the start gives a negative length, which is the tool's to refuse. It
/// ends in a blank.
QString CutCommand(const QString& tool, const QString& source, qint64 start, qint64 end,
                   const QString& destination);
