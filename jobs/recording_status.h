#pragma once

#include <QString>

// The texts and images of a running recording.

/// The tray image for the next timer tick; advances the counter. The cycle is 16 ticks of the first
/// image, 15 of the second, and one that keeps the current image (empty name).
QString BlinkImage(int& count);

/// Milliseconds from `start` to `now`, both 32-bit tick counts. Correct across their wraparound.
quint32 ElapsedMs(quint32 start, quint32 now);

/// The status text, from the elapsed time and the file's size in bytes.
QString RecordingStatus(quint32 elapsedMs, qint64 fileBytes);

/// The message for the result of a recording: -101 for lack of space, any other value for a file
/// that could not be created.
constexpr int kStoppedForSpace = -101;
QString RecordingFailure(int result);

/// Why a requested recording did not start; empty if it did. `started`: the tool was started or was
/// already running. `processError`: the process's error text for a failed start. `finishing`: the
/// running tool is still finishing the previous recording.
QString StartFailure(bool started, const QString& processError, bool finishing);

/// The messages of a recording that fails. `reason` has no full stop. `file` holds what has been
/// recorded until then, or is empty if nothing does.
QString StartFailureText(const QString& reason);
QString EndText(const QString& reason, const QString& file);
QString StandstillText(int seconds, const QString& file);

/// The message after a stop that left no `file`, or an empty one. `reason` may be empty.
QString NoFileText(const QString& file, const QString& reason);

/// The reason for a tool that ended without a word.
QString UnsaidReason(bool killed, int exitCode);
