#pragma once

#include "jobs/file_records.h"

#include <QString>
#include <QVector>

/// Appends a record for every MP4 file directly inside `dir`, hidden ones left out, by name.
/// Nothing for a directory that is empty or cannot be read; the empty text is the file system's
/// root.
void TraverseFolder(QString dir, QVector<_FILE_INFO_>& files);

/// Non-zero when `a` was modified in a later second than `b`. Files of one second are equal.
int VectorCmp(const _FILE_INFO_& a, _FILE_INFO_ b);

/// The records of `dir`, newest first; those of one second in either order.
QVector<_FILE_INFO_> NewestFirst(const QString& dir);
