#pragma once

#include <QSystemTrayIcon>
#include <QWidget>

// A small minimised window in the task list that replaces the tray icon while a recording hides the
// main window on a desktop without a system tray. Activating it does what a click on the icon does,
// so Stop is always reachable.
class TrayStandIn : public QWidget
{
    Q_OBJECT

public:
    TrayStandIn();

    /// Shows the window, minimised, if the desktop has no system tray.
    void ShowWithoutTray();

    /// Emitted like a plain click on the icon when the user activates or closes the window.
    Q_SIGNAL void activated(QSystemTrayIcon::ActivationReason reason);

protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private Q_SLOTS:
    void Activate();
};
