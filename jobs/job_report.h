#pragma once

#include <QString>

// What a cut or a merge reads in the tool's output, and what it tells the user.

// Of a job or a recording whose name is taken, where a number no longer fits into the name.
inline constexpr auto kNoFreeName = "no free name is left for the file, choose another directory";

inline constexpr auto kDurationMarker = "Duration: "; // before the input's hh:mm:ss

// The results of a job.
constexpr int kJobGood = 0;
constexpr int kJobInvalid = 1;
constexpr int kJobCancelled = 2;

// The operations, as the texts tell them apart: whatever is not a merge is a cut.
constexpr int kMergeOperation = 1;
constexpr int kCutOperation = 2;

/// The chunks of progress that one run of the tool is taken to print; more do not count.
constexpr int kTicksPerStep = 20;

// What a chunk of the tool's output tells. Which of it counts is for the job to say.
struct OutputMarks
{
    bool tick = false;    // a step of progress, one for any number of them
    bool invalid = false; // an input is no readable video
    bool missing = false; // an input is missing
};

/// Looks through one chunk alone, letter for letter: what is split between two is not seen.
OutputMarks MarksIn(const QString& chunk);

/// Percent of a cut that has printed `step` chunks of progress, 0 to 20.
int CutPercent(int step);

/// The three lines of a running job. The paths go through Latin-1, "?" for what it cannot express.
QString ProgressText(int operation, int percent, const QString& current,
                     const QString& destination);

/// The messages at a job's end, and the question before it is cancelled.
QString SuccessText(int operation, const QString& destination);
QString FailureText(int operation);
QString CancelQuestion(int operation);

/// The message of a job that cannot begin because its file's name is taken and no free one is left.
QString NoFreeNameText(int operation);
