#pragma once

#include <QDateTime>
#include <QString>

// The command lines of a merge, the names of its files and its progress. A merge first copies every
// file of its list into a transport stream, then joins these.

/// Where a merge started at `time` goes: in `directory`, "Merge_" and the time.
QString MergeDestination(const QString& directory, const QDateTime& time);

/// The transport stream of the list's entry `number`, counted from 1.
QString IntermediatePath(const QString& directory, int number);

/// The first stage, for one file. It ends in a blank.
QString ChangeToTSCommand(const QString& tool, const QString& input, const QString& stream);

/// The second stage. `list` holds the streams' paths, each followed by "|", the last one too. It
/// ends in the quote of `output`.
QString ConcatCommand(const QString& tool, const QString& list, const QString& output);

/// The chunks of progress that a merge of `files` is taken to print.
qint64 MergeTicks(qsizetype files);

/// Percent that `position` ticks are of `total`, which is above 0; whole numbers, never rounded up.
int MergePercent(qint64 position, qint64 total);
