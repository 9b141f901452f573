#pragma once

#include <QString>

#include <string>

// The duration of a video, parsed from the tool's output.

/// The command line that makes the tool describe the video at `path` and exit.
QString ProbeCommand(const QString& tool, const QString& path);

/// The eight characters after the first "Duration: ", hh:mm:ss. This truncates the fraction, and
/// the last digit from 100 hours on. Shorter if the output ends there, empty without the marker.
std::string FindDuration(const QString& output);

/// Converts hh:mm:ss to seconds. A field that is missing, not a number or too large for an int
/// counts as 0.
long long DurationSeconds(const QString& text);
