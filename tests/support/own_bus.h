// A session bus that starts no services.
#pragma once

#include "tests/support/files.h"

#include <QFile>
#include <QProcess>

class OwnBus
{
public:
    OwnBus() = default;
    OwnBus(const OwnBus&) = delete;
    OwnBus& operator=(const OwnBus&) = delete;
    ~OwnBus() { End(); }

    // Returns false if it does not start. The environment names it then.
    bool Start(const QString& folder)
    {
        const QByteArray address = "unix:path=" + QFile::encodeName(folder) + "/bus";
        Write(folder + "/bus.conf", "<busconfig><type>session</type><listen>" + address +
                                        "</listen><policy context='default'>"
                                        "<allow send_destination='*' eavesdrop='true'/>"
                                        "<allow eavesdrop='true'/><allow own='*'/>"
                                        "</policy></busconfig>");
        m_process.start("dbus-daemon",
                        {"--nofork", "--print-address", "--config-file=" + folder + "/bus.conf"});
        qputenv("DBUS_SESSION_BUS_ADDRESS", address);
        return m_process.waitForReadyRead();
    }
    void End()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};
