#pragma once

#include <QString>

// Formats paths for a command line of the tool.

/// `path` without double quotes and zero characters. The former would end its argument in the
/// command line, the latter in the tool's argument list. A path that contains one is not found.
QString CommandPath(const QString& path);

/// CommandPath() in double quotes: always one argument, whatever the path. An empty path gives just
/// the quotes, which splitting a command line drops.
QString Quoted(const QString& path);
