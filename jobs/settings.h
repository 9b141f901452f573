#pragma once

#include <QString>

// The settings file: INI format with one key, the directory for recordings.

/// The stored directory, or "ScreenSave" in the home directory if the file or the key is missing or
/// unreadable. Does not create the file.
QString ReadSavePath(const QString& iniPath);

/// Writes the directory at once. A file that cannot be written is left as it is.
void WriteSavePath(const QString& iniPath, const QString& directory);
