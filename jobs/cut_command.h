#pragma once

#include <QString>

// The command line and file name of a cut.

/// The path of a cut of `source`: its name with "Cut_" in front, in `directory`.
QString CutDestination(const QString& directory, const QString& source);

/// The command line that copies `source` from second `start` to second `end` without re-encoding.
/// An end before the start gives a negative length, which the tool refuses. Ends with a blank.
QString CutCommand(const QString& tool, const QString& source, qint64 start, qint64 end,
                   const QString& destination);
