// The desktop of scripts/gnome-desktop, driven from within the shell by JavaScript.
#pragma once

#include "tests/support/desktop.h"

class GnomeDesktop : public Desktop
{
public:
    // Call once. Check Good() after.
    GnomeDesktop();

    bool Good() const override { return m_good; }
    bool HasTray() const override { return false; }
    QList<DesktopWindow> Windows() const override; // with menus
    bool IsMinimised(uint32_t window) const override;
    bool IsTooltip(uint32_t /*window*/) const override { return false; }
    void Close(uint32_t window) override;
    void Activate(uint32_t window) override; // as the shell does for Alt+Tab
    void Click(QPoint place, int button = 1, int times = 1) override;
    void Press(const QStringList& keys) override;
    void Type(const QString& text) override;
    void Screenshot(const QString& file) const override;

    bool HasFocus(uint32_t window) const;
    bool IsFromXServer(uint32_t window) const;
    // Opens the overview and clicks the icon in its dash of the program with this window.
    bool ClickInDash(const QString& title);
    // Clicks the bar's button that ends a recording through the portal.
    bool ClickStopSharing();

    // The value of a script in the shell, as JSON; empty if it fails.
    static QByteArray Run(const QString& script);

private:
    // A property of the window, such as "minimized".
    static bool Is(uint32_t window, const QString& property);

    bool m_good = false;
};
