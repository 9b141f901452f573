#pragma once

#include "jobs/file_records.h"

#include <QString>
#include <QVector>

#include <optional>

class QEventLoop;

// Lists a folder that may not answer: one on a dead network share hangs in the system's calls for
// minutes, or for ever.

/// NewestFirst() in a thread of its own, waited for with `loop` for up to kToolWaitMs. A folder
/// that takes longer counts as one that cannot be read. Returns nothing if something else ended the
/// loop, such as the end of the program. In both cases the thread is left behind.
std::optional<QVector<_FILE_INFO_>> ListNewestFirst(const QString& dir, QEventLoop& loop);

/// Whether a thread has been left behind. It may come back at any moment, so the program must then
/// end without destroying global objects.
bool IsListingLeftBehind();
