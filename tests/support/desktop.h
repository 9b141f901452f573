// The X desktop a test runs on, driven like a user would: windows, mouse, keyboard.
#pragma once

#include "tests/support/run_program.h"

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <optional>

struct xcb_connection_t;

struct DesktopWindow
{
    uint32_t id = 0;
    uint32_t parent = 0;
    QString title;
    QString program; // the instance part of WM_CLASS, which Qt and GTK set to the program's name
    QRect place;     // without the frame, relative to the screen
    bool visible = false;
    bool managed = true; // by the window manager, unlike menus
};

class Desktop
{
public:
    // Connects to DISPLAY. Check Good() after.
    Desktop();
    Desktop(const Desktop&) = delete;
    Desktop& operator=(const Desktop&) = delete;
    ~Desktop();

    bool Good() const;
    bool HasTray() const;

    // All windows of the screen, parents before children.
    QList<DesktopWindow> Windows() const;

    // The first visible window with this title.
    std::optional<DesktopWindow> Shown(const QString& title) const;
    std::optional<DesktopWindow> ByTitle(const QString& title) const; // visible or not

    // Whether the window is minimised.
    bool IsMinimised(uint32_t window) const;
    // Whether it is a tooltip, or a notification by a tray icon.
    bool IsTooltip(uint32_t window) const;

    // What the close button and the task list do, through the window manager.
    void Close(uint32_t window);
    void Activate(uint32_t window);

    // Screen coordinates; button 1 is the left, 3 the right one.
    void Click(QPoint place, int button = 1, int times = 1);
    // Key names as in xdotool.
    void Press(const QStringList& keys);
    void Type(const QString& text);

    // Saves a screenshot as a PNG file.
    void Screenshot(const QString& file) const;

private:
    uint32_t Atom(const char* name) const;
    QByteArray Property(uint32_t window, const char* name) const;
    bool HasAtom(uint32_t window, const char* property, const char* name) const;
    void AskWindowManager(uint32_t window, const char* message, uint32_t first);
    void AddTree(QList<DesktopWindow>& windows, uint32_t window, uint32_t parent) const;

    xcb_connection_t* m_pConnection = nullptr;
    uint32_t m_root = 0;
};

// Polls until the condition is true. Returns false after a timeout.
bool WaitUntil(const std::function<bool()>& condition, int milliseconds = 15000);
