#pragma once

/// Gives the program's windows its icon, where the desktop does not know it already.
void SetApplicationIcon();
