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
        // Without an explicit size the window would be resized after it is minimised and mapped
        // again, which restores it.
        setFixedSize(sizeHint());
        showMinimized();
    }
}

void TrayStandIn::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange && isVisible() && !isMinimized()) {
        // Queued, because the window manager is still busy with the state change.
        QMetaObject::invokeMethod(this, "Activate", Qt::QueuedConnection);
    }
}

void TrayStandIn::closeEvent(QCloseEvent* event)
{
    if (qGuiApp->isSavingSession()) {
        return; // must not prevent the user from logging out
    }
    event->ignore(); // keep a way back to the recording
    Activate();
}

void TrayStandIn::Activate()
{
    if (isVisible()) {
        showMinimized();
        Q_EMIT activated(QSystemTrayIcon::Trigger);
    }
}
