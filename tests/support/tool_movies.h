// Movies for the tests of `tool`, made by the real ffmpeg, and what it says about them.
#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// What a program printed and how it ended; the code is -1 when it did not end by itself.
struct Outcome
{
    int code = -1;
    QByteArray output;
    QByteArray error;
};

Outcome RunProgram(const QString& program, const QStringList& arguments,
                   const QString& directory = {});

// All bytes of a file; empty when it cannot be read.
QByteArray Content(const QString& path);

// Writes a file with these bytes; false when that fails.
bool Write(const QString& path, const QByteArray& content);

// Writes a file that may be run; false when that fails.
bool WriteProgram(const QString& path, const QByteArray& content);

// Runs ffmpeg with its errors alone printed, over an existing file; "" or what went wrong.
QByteArray MakeMovie(const QStringList& arguments);

// The input options of a moving picture and of a tone.
QStringList PictureInput(double seconds, const QString& size = "160x120",
                         const QString& rate = "25");
QStringList ToneInput(double seconds, int rate = 48000);

// x264 at its fastest, AAC.
QStringList PlainCodecs();

// The line with the duration that `output` holds.
QByteArray DurationLine(const QByteArray& output);

// The duration in that line, in seconds; -1 when there is none.
double DurationIn(const QByteArray& output);

// Digests of the pictures as a player shows them, in their order. `seek` are options before -i.
QStringList PictureDigests(const QString& path, const QStringList& seek = {});

// Decodes all of it; "" or what ffmpeg complained about.
QByteArray DecodingErrors(const QString& path);

// The input options of a picture that is black but for 0.1 s at the beginning of each second, and
// of a silence with a tone then.
QStringList FlashInput(double seconds, const QString& size = "160x120", const QString& rate = "25");
QStringList BeepInput(double seconds, int rate = 48000);

// When the flashes and the beeps begin as a player shows them, in seconds from the start.
QList<double> FlashTimes(const QString& path);
QList<double> BeepTimes(const QString& path);
