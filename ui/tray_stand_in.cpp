#include "ui/tray_stand_in.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QLabel>
#include <QVBoxLayout>

TrayStandIn::TrayStandIn()
{
    setObjectName("m_pTrayStandIn");
    setWindowTitle(tr("Recording"));
    setWindowIcon(QIcon(":/image/rec1.png"));
    auto* box = new QVBoxLayout(this);
    box->addWidget(new QLabel(tr("Lumenfold Screen Recorder is recording."), this));
}

void TrayStandIn::ShowWithoutTray()
{
    if (!QSystemTrayIcon::isSystemTrayAvailable()) {
        // A window without a size of its own would be sized after it was minimised, and mapped
        // again: that restores it.
        setFixedSize(sizeHint());
        showMinimized();
    }
}

void TrayStandIn::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isVisible() && !isMinimized()) {
        // Later: the window manager is still busy with this change of state.
        QMetaObject::invokeMethod(this, "Activate", Qt::QueuedConnection);
    }
}

void TrayStandIn::closeEvent(QCloseEvent* event)
{
    if (qGuiApp->isSavingSession()) {
        return; // must not keep the user from logging out
    }
    event->ignore(); // the handle on a recording stays
    Activate();
}

void TrayStandIn::Activate()
{
    if (isVisible()) {
        showMinimized();
        Q_EMIT activated(QSystemTrayIcon::Trigger);
    }
}
