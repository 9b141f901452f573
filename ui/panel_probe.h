#pragma once

#include <QObject>

/// Asks the panel that shows tray icons, where it is reached through D-Bus, for a sign of life. Qt
/// waits up to 25 s for a panel that hangs, so nothing should be asked before it has answered.
class PanelProbe : public QObject
{
    Q_OBJECT

public:
    /// Does not wait. Repeats the question if the panel ends instead of answering.
    void Ask();

    /// Emitted once after each Ask(), also if there is no such panel.
    Q_SIGNAL void answered();

private Q_SLOTS:
    void ReadAnswer();
};
