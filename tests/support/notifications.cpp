#include "tests/support/notifications.h"

#include <QDBusConnection>

bool Notifications::Serve(QDBusConnection bus)
{
    return bus.registerObject("/org/freedesktop/Notifications", this,
                              QDBusConnection::ExportAllSlots) &&
           bus.registerService("org.freedesktop.Notifications");
}

uint Notifications::Notify(const QString& program, uint /*replaced*/, const QString& /*icon*/,
                           const QString& summary, const QString& body, const QStringList& actions,
                           const QVariantMap& /*hints*/, int /*milliseconds*/)
{
    shown << program + '\n' + summary + '\n' + body + actions.join("");
    return 1;
}
