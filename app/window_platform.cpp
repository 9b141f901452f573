#include "app/window_platform.h"

#include <QList>
#include <QtGlobal>

// A window of Wayland's own is sharp at every scale. GNOME gives the window more through its X
// server: a failure box above a full-screen window that does not take the keyboard, and a title
// bar.
QByteArray WindowPlatforms(const Session& session)
{
    if (session.waylandDisplay.isEmpty()) {
        return {};
    }
    return session.desktop.split(':').contains("GNOME") ? "xcb;wayland" : "wayland;xcb";
}

bool ChooseWindowPlatform()
{
    const QByteArray platforms =
        WindowPlatforms({qgetenv("WAYLAND_DISPLAY"), qgetenv("XDG_CURRENT_DESKTOP")});
    return !platforms.isEmpty() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") &&
           qputenv("QT_QPA_PLATFORM", platforms);
}
