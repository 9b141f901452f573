#include "ui/panel_probe.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace {

constexpr int kMomentMs = 300;

QDBusMessage Question()
{
    constexpr auto name = "org.kde.StatusNotifierWatcher";
    auto question = QDBusMessage::createMethodCall(name, "/StatusNotifierWatcher",
                                                   "org.freedesktop.DBus.Properties", "Get");
    question.setArguments({name, "IsStatusNotifierHostRegistered"});
    question.setAutoStartService(false);
    return question;
}

// Any answer is a sign of life, also one of the bus, that there is no panel.
bool IsAnswer(const QDBusError& error)
{
    return error.type() != QDBusError::NoReply;
}

} // namespace

void PanelProbe::Ask()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        Q_EMIT answered();
        return;
    }
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(Question()), this);
    connect(watcher, SIGNAL(finished(QDBusPendingCallWatcher*)), this, SLOT(ReadAnswer()));
}

bool PanelProbe::Answers()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return !bus.isConnected() || IsAnswer(bus.call(Question(), QDBus::Block, kMomentMs));
}

void PanelProbe::ReadAnswer()
{
    auto* watcher = static_cast<QDBusPendingCallWatcher*>(sender());
    watcher->deleteLater();
    if (IsAnswer(watcher->error())) {
        Q_EMIT answered();
    } else {
        Ask();
    }
}
