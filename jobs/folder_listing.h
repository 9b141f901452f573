#pragma once

#include "jobs/file_records.h"

#include <QString>
#include <QVector>

#include <optional>

class QEventLoop;

/// NewestFirst() in a thread of its own, waited for with `loop` for up to kToolWaitMs. A folder
/// that takes longer, as on a dead network share, counts as one that cannot be read. Returns
/// nothing if something else ended the loop, such as the end of the program. In both cases the
/// thread is left behind.
std::optional<QVector<_FILE_INFO_>> ListNewestFirst(const QString& dir, QEventLoop& loop);
