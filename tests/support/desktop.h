// The X desktop a test runs on, used as a person uses it: windows, mouse, keyboard.
#pragma once

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
    QString program; // the instance part of its class, which Qt and Gtk set to the program's name
    QRect place;     // without the window manager's frame, from the screen's upper left corner
    bool visible = false;
    bool managed = true; // by the window manager; menus are not
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

    // Every window of the screen, parents before children.
    QList<DesktopWindow> Windows() const;

    // The first visible window of this title.
    std::optional<DesktopWindow> Shown(const QString& title) const;
    std::optional<DesktopWindow> ByTitle(const QString& title) const; // visible or not

    // Whether the window is minimised.
    bool IsMinimised(uint32_t window) const;

    // What the close button and the task list do, through the window manager.
    void Close(uint32_t window);
    void Activate(uint32_t window);

    // At a place of the screen; 1 is the left button, 3 the right one.
    void Click(QPoint place, int button = 1, int times = 1);
    // Names as xdotool has them.
    void Press(const QStringList& keys);
    void Type(const QString& text);

    // Stores what the screen shows as a PNG file.
    void Screenshot(const QString& file) const;

private:
    uint32_t Atom(const char* name) const;
    QByteArray Property(uint32_t window, const char* name) const;
    void AskWindowManager(uint32_t window, const char* message, uint32_t first);
    void AddTree(QList<DesktopWindow>& windows, uint32_t window, uint32_t parent) const;

    xcb_connection_t* m_pConnection = nullptr;
    uint32_t m_root = 0;
};

struct Outcome
{
    int code = -1; // of the program; -1 when it did not run to its end
    QByteArray output;
    QByteArray errors;
};

// Runs a program to its end, at most for this long.
Outcome RunProgram(const QString& program, const QStringList& arguments, int milliseconds = 60000);

// Asks again and again until it is true; false when the time is over.
bool WaitUntil(const std::function<bool()>& condition, int milliseconds = 15000);
