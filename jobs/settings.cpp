#include "jobs/settings.h"

#include "util/ownership.h"

#include <QDir>
#include <QFile>
#include <QSettings>

namespace {
constexpr auto kSavePathKey = "/screen_record/save_path";
} // namespace

QString ReadSavePath(const QString& iniPath)
{
    const QSettings settings(iniPath, QSettings::IniFormat);
    return settings.value(kSavePathKey, QDir::homePath() + "/ScreenSave").toString();
}

void WriteSavePath(const QString& iniPath, const QString& directory)
{
    QSettings settings(iniPath, QSettings::IniFormat);
    settings.setValue(kSavePathKey, directory);
    settings.sync();
    GiveToFolderOwner(QFile::encodeName(iniPath).constData());
}
