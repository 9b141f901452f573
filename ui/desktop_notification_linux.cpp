#include "ui/desktop_notification.h"

#include <QDBusConnection>
#include <QDBusMessage>

// As org.freedesktop.Notifications describes them.
void ShowDesktopNotification(const QString& title, const QString& text)
{
    constexpr auto name = "org.freedesktop.Notifications";
    constexpr uchar critical = 2; // shown above full-screen windows too, and until it is closed
    auto call =
        QDBusMessage::createMethodCall(name, "/org/freedesktop/Notifications", name, "Notify");
    call.setArguments({title, 0U, "lumenfold-recorder", title, text, QStringList(),
                       QVariantMap{{"urgency", QVariant::fromValue(critical)}}, -1});
    QDBusConnection::sessionBus().send(call);
}
