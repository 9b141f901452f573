#pragma once

#include <QRect>

/// The place of the window that has the keyboard, of whichever program, in the screen's own pixels.
/// Empty if there is none or the platform does not tell.
QRect ActiveWindowPlace();
