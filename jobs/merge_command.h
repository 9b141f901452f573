#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// The command lines of a merge, the names of its files and its progress. A merge first copies every
// file of its list into a transport stream, then joins these.

/// Where a merge started at `time` goes: in `directory`, "Merge_" and the time.
QString MergeDestination(const QString& directory, const QDateTime& time);

/// The transport stream of the list's entry `number`, counted from 1.
QString IntermediatePath(const QString& directory, int number);

/// The first stage, for one file. It ends in a blank.
QString ChangeToTSCommand(const QString& tool, const QString& input, const QString& stream);

/// The second stage, for the paths of all `streams`. It ends in the quote of `output`.
QString ConcatCommand(const QString& tool, const QStringList& streams, const QString& output);

/// The chunks of progress that a merge of `files` is taken to print.
qint64 MergeTicks(qsizetype files);

/// Percent that `position` ticks are of `total`; whole numbers, never rounded up. 0 of no ticks, as
/// before the first merge.
int MergePercent(qint64 position, qint64 total);
