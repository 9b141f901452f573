#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

// Compares images with those of the program by content, never by size alone.

/// "home page, icon: shows rec.png, should show edit.png", or nothing. An icon has to be the same
/// at the densities 1 and 2; `size` is in the units of the geometry.
QString PictureDifference(const QString& what, const QIcon& icon, const QSize& size,
                          const QString& name);

/// The same for an image that may be scaled. On a screen of density 2 it has to come from the @2x
/// file.
QString PictureDifference(const QString& what, const QPixmap& shown, double density, QString name);
