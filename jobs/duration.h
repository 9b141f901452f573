#pragma once

#include <QString>

#include <string>

// The duration of a video, as the tool tells it.

/// The command line that makes the tool describe the video at `path` and exit.
QString ProbeCommand(const QString& tool, const QString& path);

/// The eight characters after the first "Duration: " of the tool's output, hh:mm:ss: the fraction
/// is cut off, never rounded up, and so is the last digit of 100 hours or more. Fewer where the
/// output ends; empty without the marker.
std::string FindDuration(const QString& output);

/// The seconds of a duration text, hh:mm:ss; a field that is missing, no number or
/// more than an int holds counts 0.
long long DurationSeconds(const QString& text);
