// Shared by the tests of trims and joins on the virtual desktop.
#pragma once

#include "tests/support/files.h"
#include "tests/support/recorder.h"

inline constexpr auto kPlain = "-c:v libx264 -preset ultrafast -g 50 -c:a aac";

// Makes a movie of `seconds` in the save directory: a moving picture of 320×240 and a tone, unless
// `arguments` says otherwise.
bool MakeMovie(const Recorder& recorder, const QString& name, int seconds,
               const QString& arguments = kPlain, bool sound = true,
               const QString& size = "320x240");

// Selects the first video of the cut page, moves the slider and clicks Start and End.
void MarkFirstVideo(Recorder& recorder, double start, double end);

// Records for some seconds and stops. Returns whether there is a settled recording.
bool Record(Recorder& recorder, int milliseconds);

// Adds the first `count` videos of the merge page to the list.
void AddVideos(Recorder& recorder, int count);

// Clicks the button, chooses the folder and closes the message that follows. Returns what went
// wrong. The message's text cannot be read from outside, so every test looks at the files.
QString RunJob(Recorder& recorder, const QString& button, const QString& folder);
