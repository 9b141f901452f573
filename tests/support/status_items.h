#pragma once

#include "tests/support/desktop.h"

#include <QCoreApplication>
#include <QDBusContext>
#include <QDBusMessage>
#include <QProcess>

#include <csignal>

// A panel that shows status items, which come by the session bus.

inline constexpr auto kConnection = "panel";

// What this program is with one of these arguments.
inline constexpr auto kPlainPanel = "--panel";
inline constexpr auto kStoppingPanel = "--stopping-panel";

// What a panel has on the bus: a list of status items, and the information whether they are shown.
class StatusItems : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ IsShown)
    Q_PROPERTY(int ProtocolVersion MEMBER version)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems MEMBER items)

public:
    int version = 0;
    QStringList items; // the connections that they came by

    bool IsShown() const
    {
        Q_EMIT WasAsked();
        return m_bShown;
    }
    void Show(bool show)
    {
        m_bShown = show;
        if (show) {
            Q_EMIT StatusNotifierHostRegistered();
        } else {
            Q_EMIT StatusNotifierHostUnregistered();
        }
    }

    Q_SIGNAL void WasAsked() const;
    Q_SIGNAL void GotItem() const;

    // NOLINTBEGIN(readability-identifier-naming): the names of the methods and signals
public slots:
    void RegisterStatusNotifierItem(const QString& /*item*/)
    {
        items << message().service();
        Q_EMIT GotItem();
    }

signals:
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();
    // NOLINTEND(readability-identifier-naming)

private:
    bool m_bShown = true;
};

/// Puts the items on the bus, as a panel of this process. Returns whether the bus lets it.
bool Serve(const QString& address, StatusItems& items);

/// Runs a panel in a process of its own, which says "ready", "item" when it has got one, and "at
/// rest" when it has been asked and not again for a while.
int RunPlainPanel(int count, char** values);

/// Runs a panel that stops some time after it has got an item, at a moment when nobody waits for
/// its answer. It says "hangs" before.
int RunStoppingPanel(int count, char** values);

// What a panel of its own has said.
class PanelProcess
{
public:
    PanelProcess(const char* kind, const QString& address)
    {
        m_process.start(QCoreApplication::applicationFilePath(), {kind, address});
    }
    ~PanelProcess()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(PanelProcess)

    bool HasSaid(const char* text)
    {
        return WaitUntil([&] {
            m_said += m_process.readAll();
            return m_said.contains(text);
        });
    }
    void Signal(int signal) { kill(static_cast<pid_t>(m_process.processId()), signal); }

private:
    QProcess m_process;
    QByteArray m_said;
};
