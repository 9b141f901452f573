#include "ui/panel_probe.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

void PanelProbe::Ask()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        Q_EMIT answered();
        return;
    }
    constexpr auto name = "org.kde.StatusNotifierWatcher";
    auto question = QDBusMessage::createMethodCall(name, "/StatusNotifierWatcher",
                                                   "org.freedesktop.DBus.Properties", "Get");
    question.setArguments({name, "IsStatusNotifierHostRegistered"});
    question.setAutoStartService(false);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(watcher, SIGNAL(finished(QDBusPendingCallWatcher*)), this, SLOT(ReadAnswer()));
}

// Any answer is a sign of life, also one of the bus, that there is no panel.
void PanelProbe::ReadAnswer()
{
    auto* watcher = static_cast<QDBusPendingCallWatcher*>(sender());
    watcher->deleteLater();
    if (watcher->error().type() == QDBusError::NoReply) {
        Ask();
    } else {
        Q_EMIT answered();
    }
}
