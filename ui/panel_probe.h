#pragma once

#include <QObject>

#include <functional>
#include <vector>

/// Asks the panel that shows tray icons, where it is reached through D-Bus, for a sign of life. Qt
/// waits up to 25 s for a panel that hangs, so nothing should be asked before it has answered.
class PanelProbe : public QObject
{
    Q_OBJECT

public:
    /// Does not wait. Repeats the question if the panel ends instead of answering.
    void Ask();

    /// Whether the panel answers now, or there is none. Waits a moment, and no more.
    static bool Answers();

    /// Does at once what Qt asks the panel for, if that answers. Otherwise does it when the panel
    /// has answered, in the order of the calls.
    void WhenItAnswers(const std::function<void()>& act);

    /// Emitted once after each Ask(), also if there is no such panel.
    Q_SIGNAL void answered();

private Q_SLOTS:
    void ReadAnswer();
    void DoWhatWaits();

private:
    std::vector<std::function<void()>> m_waiting;
};
