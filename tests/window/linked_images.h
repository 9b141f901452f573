#pragma once

#include <QImage>

/// The logo as a static library that links the images sees it; null when the images are missing.
QImage LogoSeenFromLibrary();
