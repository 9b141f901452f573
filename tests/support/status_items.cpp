#include "tests/support/status_items.h"

#include <QDBusConnection>
#include <QElapsedTimer>
#include <QTimer>

#include <cstdio>

namespace {

constexpr auto kService = "org.kde.StatusNotifierWatcher";
constexpr auto kPath = "/StatusNotifierWatcher";
constexpr int kPauseMs = 200; // between questions that do not belong together

void Say(const char* text)
{
    std::puts(text);
    std::fflush(stdout);
}

int RunPanel(const QString& address, StatusItems& items)
{
    if (!Serve(address, items)) {
        return 1;
    }
    Say("ready");
    return QCoreApplication::exec();
}

} // namespace

bool Serve(const QString& address, StatusItems& items)
{
    auto bus = QDBusConnection::connectToBus(address, kConnection);
    return bus.isConnected() &&
           bus.registerObject(kPath, &items, QDBusConnection::ExportAllContents) &&
           bus.registerService(kService);
}

int RunPlainPanel(int count, char** values)
{
    const QCoreApplication program(count, values);
    StatusItems items;
    QTimer pause;
    pause.setSingleShot(true);
    pause.setInterval(kPauseMs);
    QObject::connect(&items, &StatusItems::WasAsked, &pause, [&] { pause.start(); });
    QObject::connect(&pause, &QTimer::timeout, &items, [] { Say("at rest"); });
    QObject::connect(&items, &StatusItems::GotItem, &items, [] { Say("item"); });
    return RunPanel(values[2], items);
}

int RunStoppingPanel(int count, char** values)
{
    const QCoreApplication program(count, values);
    StatusItems items;
    QTimer pause;
    pause.setSingleShot(true);
    pause.setInterval(kPauseMs);
    QElapsedTimer life;
    QObject::connect(&items, &StatusItems::WasAsked, &pause, [&] {
        if (!items.items.isEmpty() && !life.isValid()) {
            life.start();
        }
        if (life.isValid() && life.hasExpired(1000)) {
            pause.start();
        }
    });
    QObject::connect(&pause, &QTimer::timeout, &items, [] {
        Say("hangs");
        std::raise(SIGSTOP);
    });
    return RunPanel(values[2], items);
}
