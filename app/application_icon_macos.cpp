#include "app/application_icon.h"

// The Dock shows the icon of the bundle. One that is set by the program would replace it.
void SetApplicationIcon() {}
