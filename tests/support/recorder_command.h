#pragma once

#include <QStringList>

// The recorder's arguments for `tool` to record these devices, "screen:sound" each, to a file.
inline QStringList RecorderCommand(const QStringList& devices, const QString& path)
{
    QStringList arguments;
    for (const QString& device : devices) {
        arguments += QStringList{"-f", "avfoundation"};
        arguments += arguments.size() == 2 ? QStringList{"-framerate", "30"} : QStringList();
        arguments += QStringList{"-i", device};
    }
    return arguments +
           QString("-ar 44100 -r 29.97 -preset ultrafast -max_muxing_queue_size 9999 "
                   "-async 1 -pix_fmt yuv420p")
               .split(' ') +
           QStringList{path};
}
