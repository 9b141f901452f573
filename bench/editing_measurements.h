// What the measurements of trims and joins share: movies, the window, and ffmpeg beside it.
#pragma once

#include "bench/table.h"
#include "tests/window/fake_tool.h"
#include "tests/window/modal_boxes.h"

#include <functional>

class EditingMeasurements : public QObject
{
protected:
    // Puts the real `tool` beside this program.
    static void InstallRealTool();

    // ffmpeg's arguments for a movie with this picture and a tone, encoded like a recording.
    static QStringList Source(const QString& picture);
    // Runs ffmpeg and waits for it. Returns false if it fails.
    static bool Ffmpeg(const QStringList& arguments);
    // The same until its last argument, a file, is on the disk, because `tool` waits for that too.
    static bool FfmpegToDisk(const QStringList& arguments);
    // Deletes what a job wrote, so that every round writes a new file.
    static void Empty(const QString& folder);

    // The seconds `work` takes.
    static double Seconds(const std::function<void()>& work);
    // The shortest of several rounds, which other work and the disk disturbed least.
    static double Least(const QList<double>& seconds);
    static double Mebibytes(const QString& path);

    QString Path(const QString& name) const { return m_folder.filePath(name); }
    // A new folder with `copies` copies of this movie, "000.mp4" and so on.
    QString Folder(const QString& name, const QString& movie, int copies) const;
    std::unique_ptr<DRUI> Window(const QString& folder, const char* pageSlot) const;
    static void Call(DRUI& window, const char* slot);
    static void ClickRow(DRUI& window, const char* table, int row);

private:
    QTemporaryDir m_folder;
};
