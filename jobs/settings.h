#pragma once

#include <QString>

// The settings file: INI format, one key, the directory that recordings are saved in.

/// The saved directory; the home directory's "ScreenSave" when the file or the key is missing or
/// cannot be read. Reading never creates the file.
QString ReadSavePath(const QString& iniPath);

/// Writes the directory at once. A file that cannot be written is left as it is.
void WriteSavePath(const QString& iniPath, const QString& directory);
