#pragma once

class QString;

/// Shows a warning among the desktop's notifications, which need no tray icon. Stays until the user
/// has seen it. Does not wait; nothing happens where the desktop has no notifications.
void ShowDesktopNotification(const QString& title, const QString& text);
