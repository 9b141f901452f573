#pragma once

#include <QByteArray>
#include <QMap>
#include <QStringList>

// The content of a file, or empty if it cannot be read.
QByteArray Content(const QString& path);

// Writes a file. Returns false on failure.
bool Write(const QString& path, const QByteArray& content);

// Writes an executable file. Returns false on failure.
bool WriteProgram(const QString& path, const QByteArray& content);

// The files of a folder, hidden ones too, by name; and the content of each.
QStringList FileNames(const QString& folder);
QMap<QString, QByteArray> Contents(const QString& folder);
