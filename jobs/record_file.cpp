#include "jobs/record_file.h"

#include "jobs/record_command.h"
#include "jobs/work_thread.h"
#include "util/ownership.h"

#include <QDir>
#include <QFile>

#include <memory>

std::optional<QString> NewRecordPath(const QString& directory, const QDateTime& time)
{
    const auto path = std::make_shared<QString>();
    const WorkThread work([directory, time, path] {
        if (QDir().mkdir(directory + '/')) {
            GiveRecording(directory);
        }
        *path = FreePath(RecordPath(directory, time));
    });
    return work.Wait(kDirectoryWaitMs) ? std::optional(*path) : std::nullopt;
}

bool GiveRecording(const QString& path)
{
    GiveToFolderOwner(QFile::encodeName(path).constData());
    return true;
}
