#pragma once

#include <QString>

// How a path stands in a command line for the tool.

/// `path` without double quotes and zero characters: the first would end its argument in the
/// command line, the second in the list of arguments that the tool gets. A path that has one is not
/// found.
QString CommandPath(const QString& path);

/// CommandPath in double quotes: one argument, whatever the path is. Of an empty text, which the
/// splitting of a command line drops, the quotes alone.
QString Quoted(const QString& path);
