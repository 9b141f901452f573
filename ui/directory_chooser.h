#pragma once

#include <QString>

class QWidget;

/// QFileDialog::getExistingDirectory() over `window`, without a caption. Qt's dialog begins in
/// `start`, or without one where the user was last. It freezes if it finds a network share there,
/// or in what it remembers, that does not answer. Then this one remembers nothing, and begins in
/// the nearest directory above that can be listed. Blocks for a few seconds before.
QString ChooseDirectory(QWidget* window, const QString& start = QString());
