#pragma once

#include "ui/panel_probe.h"

#include <QElapsedTimer>
#include <QSystemTrayIcon>
#include <QWidget>

class QLabel;

// A small minimised window in the task list that replaces the tray icon while a recording hides the
// main window and the desktop shows no system tray. A click in the task list shows it: it has the
// elapsed time, Stop, and a button that does what a click on the icon does. Closing it does the
// same, and never fails, so that it does not keep the user from logging out.
class TrayStandIn : public QWidget
{
    Q_OBJECT

public:
    TrayStandIn();

    /// Shows the window, minimised, or hides it, depending on whether there is a system tray now.
    /// Call it again and again during a recording: a tray can vanish and come back, and the window
    /// may have been closed. Never waits for a panel that hangs; the window replaces it after a few
    /// seconds.
    void FollowTray();

    void ShowElapsed(quint32 milliseconds);

    /// Emitted like a plain click on the icon when the main window is wanted.
    Q_SIGNAL void activated(QSystemTrayIcon::ActivationReason reason);
    Q_SIGNAL void stopClicked();

protected:
    void closeEvent(QCloseEvent* event) override;

private Q_SLOTS:
    void LookForTray();
    void ShowMainWindow();

private:
    QLabel* m_pElapsed = nullptr;
    PanelProbe m_panel;
    QElapsedTimer m_sinceStep; // the last look for a tray, or question to the panel before it
    bool m_bHasTray = false;
    bool m_bAsked = false; // the panel, which has not answered yet
};
