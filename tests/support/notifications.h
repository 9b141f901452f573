// The notification service of a desktop.
#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

class QDBusConnection;

class Notifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList shown; // program, summary and body, one per line

    // Returns false if there is such a service already.
    bool Serve(QDBusConnection bus);

public slots:
    // NOLINTNEXTLINE(readability-identifier-naming): the name of the method
    uint Notify(const QString& program, uint replaced, const QString& icon, const QString& summary,
                const QString& body, const QStringList& actions, const QVariantMap& hints,
                int milliseconds);
};
