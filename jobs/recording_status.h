#pragma once

#include <QString>

// What a running recording shows.

/// The tray image of the next timer tick, and the counter after it: 16 ticks of the first image, 15
/// of the second, one tick that leaves the image as it is (an empty name) and starts the cycle
/// again.
QString BlinkImage(int& count);

/// Milliseconds from `start` to `now`, both tick counts cut to 32 bits; right across their wrap.
quint32 ElapsedMs(quint32 start, quint32 now);

/// The status text: elapsed time in whole seconds and the file's size in bytes.
QString RecordingStatus(quint32 elapsedMs, qint64 fileBytes);

/// The text for the result of a recording that has stopped: -101 lack of space, any other code a
/// file that could not be made.
constexpr int kStoppedForSpace = -101;
QString RecordingFailure(int result);

/// Why a recording that was asked for never began; empty when it did. `started` tells whether the
/// tool was started or a run of it was going already, `processError` is the text of the process for
/// a start that failed, `finishing` tells that the run that was going finishes another recording.
QString StartFailure(bool started, const QString& processError, bool finishing);
