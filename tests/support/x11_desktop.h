// The X desktop of scripts/virtual-desktop.
#pragma once

#include "tests/support/desktop.h"

#include <QByteArray>

struct xcb_connection_t;

class X11Desktop : public Desktop
{
public:
    // Connects to DISPLAY. Check Good() after.
    X11Desktop();
    X11Desktop(const X11Desktop&) = delete;
    X11Desktop& operator=(const X11Desktop&) = delete;
    ~X11Desktop() override;

    bool Good() const override;
    bool HasTray() const override;
    QList<DesktopWindow> Windows() const override;
    bool IsMinimised(uint32_t window) const override;
    bool IsTooltip(uint32_t window) const override;
    void Close(uint32_t window) override; // through the window manager, as the next
    void Activate(uint32_t window) override;
    void Click(QPoint place, int button = 1, int times = 1) override;
    void Press(const QStringList& keys) override;
    void Type(const QString& text) override;
    void Screenshot(const QString& file) const override;

private:
    uint32_t Atom(const char* name) const;
    QByteArray Property(uint32_t window, const char* name) const;
    bool HasAtom(uint32_t window, const char* property, const char* name) const;
    void AskWindowManager(uint32_t window, const char* message, uint32_t first);
    void AddTree(QList<DesktopWindow>& windows, uint32_t window, uint32_t parent) const;

    xcb_connection_t* m_pConnection = nullptr;
    uint32_t m_root = 0;
};
