// The Wayland desktop of scripts/wayland-desktop.
#pragma once

#include "tests/support/desktop.h"
#include "tests/support/virtual_seat.h"

class QJsonObject;

class SwayDesktop : public Desktop
{
public:
    bool Good() const override;
    bool HasTray() const override { return false; }
    QList<DesktopWindow> Windows() const override; // without menus
    bool IsMinimised(uint32_t /*window*/) const override { return false; }
    bool IsTooltip(uint32_t /*window*/) const override { return false; }
    void Close(uint32_t window) override;
    void Activate(uint32_t window) override;
    void Click(QPoint place, int button = 1, int times = 1) override;
    void Press(const QStringList& keys) override;
    void Type(const QString& text) override;
    void Screenshot(const QString& file) const override;

    // Moves the pointer from one place to the other with the left button held.
    void Drag(QPoint from, QPoint to);
    // Whether the window is Wayland's own, not one of the X server.
    bool IsNative(uint32_t window) const;
    bool HasFocus(uint32_t window) const;

    // What swaymsg answers.
    static QByteArray Ask(const QStringList& arguments);

private:
    void MoveTo(QPoint place);
    QJsonObject Node(uint32_t window) const;

    VirtualSeat m_seat;
};
