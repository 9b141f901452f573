// The desktop a test runs on, driven like a user would: windows, mouse, keyboard.
#pragma once

#include "tests/support/run_program.h"

#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <optional>

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
    virtual ~Desktop() = default;

    // Whether there is one to run on.
    virtual bool Good() const = 0;
    virtual bool HasTray() const = 0;

    // All windows of the screen, parents before children.
    virtual QList<DesktopWindow> Windows() const = 0;

    // The first visible window with this title.
    std::optional<DesktopWindow> Shown(const QString& title) const;
    std::optional<DesktopWindow> ByTitle(const QString& title) const; // visible or not
    // Waits until it is shown and neither moved nor resized any more.
    std::optional<DesktopWindow> AtRest(const QString& title) const;

    // Whether the window is minimised.
    virtual bool IsMinimised(uint32_t window) const = 0;
    // Whether there is a window with this title in the task list, shown or minimised.
    bool IsInTaskList(const QString& title) const;
    // Whether it is a tooltip, or a notification by a tray icon.
    virtual bool IsTooltip(uint32_t window) const = 0;

    // What the close button and the task list do.
    virtual void Close(uint32_t window) = 0;
    virtual void Activate(uint32_t window) = 0;

    // Screen coordinates; button 1 is the left, 3 the right one.
    virtual void Click(QPoint place, int button = 1, int times = 1) = 0;
    // Key names as in xdotool.
    virtual void Press(const QStringList& keys) = 0;
    virtual void Type(const QString& text) = 0;

    // Saves a screenshot as a PNG file.
    virtual void Screenshot(const QString& file) const = 0;

protected:
    Desktop() = default;
    Desktop(const Desktop&) = default;
    Desktop& operator=(const Desktop&) = default;
};

// Polls until the condition is true. Returns false after a timeout.
bool WaitUntil(const std::function<bool()>& condition, int milliseconds = 15000);
