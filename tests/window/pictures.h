#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

// Compares images with those of the program by content, never by size alone.

/// "home page, icon: shows rec.png, should show edit.png", or nothing. An icon has to be the same
/// at the densities 1 and 2; `size` is in the units of the geometry.
QString PictureDifference(const QString& what, const QIcon& icon, const QSize& size,
                          const QString& name);

/// The same for an image that may be scaled. It has to come from the @2x file if the normal one has
/// fewer pixels than are shown.
QString PictureDifference(const QString& what, const QPixmap& shown, QString name);
