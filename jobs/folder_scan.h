#pragma once

#include "jobs/file_records.h"

#include <QString>
#include <QVector>

/// Appends a record for every MP4 file in `dir`, sorted by name, without hidden files and
/// subdirectories. Appends nothing if `dir` cannot be read. An empty `dir` is the root directory.
void TraverseFolder(QString dir, QVector<_FILE_INFO_>& files);

/// Non-zero if `a` was modified in a later second than `b`. Files of the same second are equal.
int VectorCmp(const _FILE_INFO_& a, _FILE_INFO_ b);

/// The records of `dir`, newest first. Files of the same second are in no particular order.
QVector<_FILE_INFO_> NewestFirst(const QString& dir);
