#pragma once

#include <QString>

// What a cut or merge looks for in the tool's output, and what it shows the user.

// Why a job or a recording does not start if its file name is taken and too long to take a number.
inline constexpr auto kNoFreeName = "no free name is left for the file, choose another directory";

inline constexpr auto kDurationMarker = "Duration: "; // before the input's hh:mm:ss

// The results of a job.
constexpr int kJobGood = 0;
constexpr int kJobInvalid = 1;
constexpr int kJobCancelled = 2;

// The operations, for the texts below. Any other value counts as a cut.
constexpr int kMergeOperation = 1;
constexpr int kCutOperation = 2;

/// The number of progress chunks one run of the tool is assumed to print. Further ones are ignored.
constexpr int kTicksPerStep = 20;

// What a chunk of the tool's output contains. The job decides what counts.
struct OutputMarks
{
    bool tick = false;    // progress, counted once per chunk
    bool invalid = false; // an input is not a readable video
    bool missing = false; // an input is missing
};

/// Looks at one chunk only, case-sensitively. A text split between two chunks is not found.
OutputMarks MarksIn(const QString& chunk);

/// The percentage of a cut after `step` progress chunks (0 to 20).
int CutPercent(int step);

/// The three lines shown for a running job. Paths are converted to Latin-1, with "?" for other
/// characters.
QString ProgressText(int operation, int percent, const QString& current,
                     const QString& destination);

/// The messages at the end of a job, and the question before it is cancelled.
QString SuccessText(int operation, const QString& destination);
QString FailureText(int operation);
QString CancelQuestion(int operation);

/// The message of a job that cannot begin because its file's name is taken and no free one is left.
QString NoFreeNameText(int operation);
