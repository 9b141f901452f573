#pragma once

#include "tests/support/desktop.h"

// What a player shows of a movie. A cut that copies shows exactly the frames of its source.

// All frames a player shows, with a digest and a time in seconds.
struct ShownPicture
{
    QString hash;
    double seconds = 0;
};

inline QList<ShownPicture> Pictures(const QString& file)
{
    const Outcome decoded = RunProgram("ffmpeg", {"-v", "error", "-i", file, "-map", "0:v:0",
                                                  "-vsync", "passthrough", "-f", "framemd5", "-"});
    QList<ShownPicture> pictures;
    double unit = 0;
    for (const QString& line : QString::fromUtf8(decoded.output).split('\n', Qt::SkipEmptyParts)) {
        if (line.startsWith("#tb 0: 1/")) {
            unit = 1 / line.section('/', 1).toDouble();
        } else if (!line.startsWith('#')) {
            pictures << ShownPicture{line.section(',', 5).trimmed(),
                                     line.section(',', 2, 2).trimmed().toDouble() * unit};
        }
    }
    return pictures;
}

// The time of this frame among the others, in seconds, or -1 if it is not among them.
inline double SecondOf(const QList<ShownPicture>& pictures, const ShownPicture& sought)
{
    for (const ShownPicture& picture : pictures) {
        if (picture.hash == sought.hash) {
            return picture.seconds;
        }
    }
    return -1;
}
