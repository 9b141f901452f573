#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// The command lines, file names and progress of a merge. A merge first copies every file of its
// list to a transport stream, then joins these.

/// The path of a merge started at `time`: "Merge_" and the time, in `directory`.
QString MergeDestination(const QString& directory, const QDateTime& time);

/// The path of the transport stream for list entry `number`, counted from 1.
QString IntermediatePath(const QString& directory, int number);

/// The command line of the first stage, for one file. Ends with a blank.
QString ChangeToTSCommand(const QString& tool, const QString& input, const QString& stream);

/// The command line of the second stage, for all `streams`. Ends with the quote of `output`.
QString ConcatCommand(const QString& tool, const QStringList& streams, const QString& output);

/// The number of progress chunks a merge of `files` files is assumed to print.
qint64 MergeTicks(qsizetype files);

/// `position` as a percentage of `total`, rounded down. 0 if `total` is 0, as before the first
/// merge.
int MergePercent(qint64 position, qint64 total);
