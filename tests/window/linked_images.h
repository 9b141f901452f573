#pragma once

#include <QImage>

/// The logo as seen by a static library that links the images. Null if the images are missing.
QImage LogoSeenFromLibrary();
