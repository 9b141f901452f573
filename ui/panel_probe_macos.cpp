#include "ui/panel_probe.h"

// The menu bar is always there.
void PanelProbe::Ask()
{
    ReadAnswer();
}

void PanelProbe::ReadAnswer()
{
    Q_EMIT answered();
}
