#pragma once

#include "jobs/free_space.h"
#include "jobs/slow_question.h"

#include <QDateTime>
#include <QString>

#include <optional>

/// How long a recording's start waits for the save directory, in milliseconds. A disk that has to
/// spin up takes seconds.
inline constexpr int kDirectoryWaitMs = 5000;

// Why a recording does not start then.
inline constexpr auto kDirectoryDoesNotAnswer = "the save directory does not answer";

/// Creates the last level of `directory` if it is missing, and returns the path for a recording
/// that begins at `time`: FreePath(), empty if no name is free. Blocks, kDirectoryWaitMs at most;
/// returns nothing if the directory has not answered by then.
std::optional<QString> NewRecordPath(const QString& directory, const QDateTime& time);

/// GiveToFolderOwner(). Returns true.
bool GiveRecording(const QString& path);

/// What a recording asks of its save directory and its file, again and again.
struct RecordingQuestions
{
    SlowQuestion<quint64> freeBytes{FreeBytes};
    SlowQuestion<qint64> fileBytes{FileBytes};
    SlowQuestion<bool> given{GiveRecording};
};
