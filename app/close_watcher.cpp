#include "app/close_watcher.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>

CloseWatcher::CloseWatcher(QWidget& window)
{
    QApplication::setQuitOnLastWindowClosed(false);
    window.installEventFilter(this);
}

bool CloseWatcher::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Close) {
        // The window accepts every close. Queued, so that it gets the event before the loop ends.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(), [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}
