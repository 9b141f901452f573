#pragma once

#include "tests/support/desktop.h"
#include "tests/support/idle_services.h"
#include "tests/support/tool_movies.h"
#include "tests/support/tool_take.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// A test of recordings with a message bus of its own, which is both the session's and the
// system's, and services on it.
class IdleServicesTest : public QObject
{
protected:
    void Prepare()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_folder->path()));
        m_screenSaver = std::make_unique<ScreenSaver>();
        m_powerManagement = std::make_unique<PowerManagement>();
        m_sessionManager = std::make_unique<SessionManager>();
        m_logind = std::make_unique<Logind>();
    }
    void Finish()
    {
        QDBusConnection::disconnectFromBus("test");
        if (m_bus.state() != QProcess::NotRunning) {
            m_bus.terminate();
            m_bus.waitForFinished();
        }
    }
    void StartBus(const QStringList& options = {"--session"})
    {
        const QString address = "unix:path=" + m_folder->filePath("bus");
        m_bus.start("dbus-daemon",
                    options + QStringList{"--nofork", "--print-address", "--address=" + address});
        QVERIFY2(m_bus.waitForReadyRead(), "dbus-daemon does not start");
        auto connection = QDBusConnection::connectToBus(address, "test");
        QVERIFY2(connection.isConnected(), qPrintable(connection.lastError().message()));
        qputenv("DBUS_SESSION_BUS_ADDRESS", address.toUtf8());
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", address.toUtf8());
    }
    void Register(const QString& service, const QString& path, Service& object)
    {
        QDBusConnection bus("test");
        QVERIFY(bus.registerObject(path, &object, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(service));
    }
    void RegisterAll()
    {
        Register("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", *m_screenSaver);
        Register("org.freedesktop.PowerManagement", "/org/freedesktop/PowerManagement/Inhibit",
                 *m_powerManagement);
        Register("org.gnome.SessionManager", "/org/gnome/SessionManager", *m_sessionManager);
        Register("org.freedesktop.login1", "/org/freedesktop/login1", *m_logind);
    }
    // Returns the recording when it is running.
    std::unique_ptr<Take> Record()
    {
        auto take = std::make_unique<Take>(m_folder->filePath("o.mp4"), "0");
        return WaitUntil([&] { return take->HasPicture(); }) ? std::move(take) : nullptr;
    }
    void Stop(Take& take)
    {
        take.Type("q\n");
        QVERIFY(take.WaitForEnd());
        QCOMPARE(take.ExitCode(), 0);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QProcess m_bus;
    std::unique_ptr<ScreenSaver> m_screenSaver;
    std::unique_ptr<PowerManagement> m_powerManagement;
    std::unique_ptr<SessionManager> m_sessionManager;
    std::unique_ptr<Logind> m_logind;
};
