// Movies for the tests of `tool`, made with the real ffmpeg, and what it reports about them.
#pragma once

#include "tests/support/files.h"
#include "tests/support/run_program.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

// Runs ffmpeg, overwriting existing files, or takes the result from the cache. Returns its error
// output, or "" on success.
QByteArray MakeMovie(const QStringList& arguments);

// The input options of a moving picture and of a tone.
QStringList PictureInput(double seconds, const QString& size = "160x120",
                         const QString& rate = "25");
QStringList ToneInput(double seconds, int rate = 48000);

// Fastest x264 preset, AAC.
QStringList PlainCodecs();

// The line with the duration in `output`.
QByteArray DurationLine(const QByteArray& output);

// The duration in that line in seconds, or -1 if there is none.
double DurationIn(const QByteArray& output);

// Digests of the frames in display order. `seek`: options before -i.
QStringList PictureDigests(const QString& path, const QStringList& seek = {});

// Decodes the whole file. Returns ffmpeg's complaints, or "".
QByteArray DecodingErrors(const QString& path);

// Input options for a picture that is black except for the first 0.1 s of each second, and for
// silence with a tone at the same times.
QStringList FlashInput(double seconds, const QString& size = "160x120", const QString& rate = "25");
QStringList BeepInput(double seconds, int rate = 48000);

// The start times of the flashes and beeps, in seconds, as a player shows them.
QList<double> FlashTimes(const QString& path);
QList<double> BeepTimes(const QString& path);
