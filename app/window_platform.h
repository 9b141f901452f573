#pragma once

#include <QByteArray>

/// What a session says about itself in the environment.
struct Session
{
    QByteArray waylandDisplay; ///< WAYLAND_DISPLAY
    QByteArray desktop;        ///< XDG_CURRENT_DESKTOP: names with colons between them
};

/// The platforms of Qt to try for the window, best first, as in QT_QPA_PLATFORM; empty: Qt's own
/// choice.
QByteArray WindowPlatforms(const Session& session);

/// Sets QT_QPA_PLATFORM accordingly, unless the user has set it. Call it before creating the
/// application object. Returns whether the variable was set here.
bool ChooseWindowPlatform();
