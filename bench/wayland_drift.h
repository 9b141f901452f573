// A long recording: what its processes hold, and where its sounds lie.
#pragma once

#include "tests/support/measure.h"

#include <QString>
#include <QStringList>

// A pattern with beeps.
struct Sounding
{
    const char* name;
    const char* output; // of the sound server
    int hertz;
    int y; // of the pattern
};

constexpr Sounding kComputer{"computer", "speaker", 1000, 0};
constexpr Sounding kMicrophone{"microphone", "mic_in", 1700, 100};

// The options of a test pattern that leaves out the flashes for which the machine is too busy.
QStringList PunctualPattern(const Sounding& sounding);

void PrintGrowth(const QMap<qint64, Holding>& processes, int minutes);
void PrintFrames(const QMap<QString, QString>& report);
// The offsets of this sound in the first and the last minute.
void PrintOffsets(const QMap<QString, QString>& report, const Sounding& sounding);
