#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>

// Pictures are compared with those of the program by what they show, never by their size.

/// "home page, icon: shows rec.png, should show edit.png", or nothing. An icon has to be the same
/// at the densities 1 and 2; `size` is in the units of the geometry.
QString PictureDifference(const QString& what, const QIcon& icon, const QSize& size,
                          const QString& name);

/// The same of a picture that may have been scaled. On a screen of density 2 it has to come from
/// the finer file.
QString PictureDifference(const QString& what, const QPixmap& shown, double density, QString name);
