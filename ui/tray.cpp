#include "ui/drui.h"
#include "ui/tray_stand_in.h"

#include <QAction>
#include <QMenu>

// Every call creates a new icon. The previous one stays a child of the window, visible if a
// recording showed it. This is intended. The icon of a panel that hangs is created when it answers.
void DRUI::CreateSystemTray()
{
    m_panel.WhenItAnswers([this] { AddTrayIcon(); });
}

void DRUI::AddTrayIcon()
{
    m_pTrayIcon = new QSystemTrayIcon(QIcon(":/image/rec1.png"), this);
    m_pTrayIcon->setObjectName("m_pTrayIcon");
    m_pTrayIcon->setToolTip(tr("Lumenfold Screen Recorder"));
    connect(m_pTrayIcon, SIGNAL(activated(QSystemTrayIcon::ActivationReason)), this,
            SLOT(trayiconActivated(QSystemTrayIcon::ActivationReason)));

    auto* menu = new QMenu(this);
    const auto add = [&](const QString& text, const QString& image, const char* slot) {
        auto* entry = new QAction(QIcon(image), text, this);
        connect(entry, SIGNAL(triggered()), this, slot);
        menu->addAction(entry);
        return entry;
    };
    add(tr("Pause"), ":/image/pause.png", SLOT(btnSlotMenuPause()))->setEnabled(false);
    add(tr("Stop"), ":/image/stop.png", SLOT(btnSlotMenuStop()));
    add(tr("Quit"), ":/image/quit.png", SLOT(btnSlotMenuQuit()));
    m_pTrayIcon->setContextMenu(menu);
}

QAction* DRUI::TrayEntry(int position) const
{
    // There is no icon before the record page is first entered.
    return m_pTrayIcon == nullptr ? nullptr : m_pTrayIcon->contextMenu()->actions().value(position);
}

void DRUI::SetTrayEntry(int position, const QString& text, const QString& image)
{
    if (QAction* entry = TrayEntry(position)) {
        entry->setText(text);
        entry->setIcon(QIcon(image));
    }
}

void DRUI::SetTrayIcon(const QString& image)
{
    if (m_pTrayIcon == nullptr) {
        return;
    }
    // One icon per image: Qt caches the scaled images of every new icon, which adds up to megabytes
    // in an hour of blinking.
    auto icon = m_trayIcons.find(image);
    if (icon == m_trayIcons.end()) {
        icon = m_trayIcons.insert(image, QIcon(image));
    }
    m_pTrayIcon->setIcon(*icon);
}

// A click brings the window back. A recording goes on.
void DRUI::trayiconActivated(QSystemTrayIcon::ActivationReason reason)
{
    if (reason == QSystemTrayIcon::DoubleClick || reason == QSystemTrayIcon::Trigger) {
        showNormal();
        raise();
        activateWindow(); // on macOS it would stay behind the windows of other programs
    }
}

// If no recording is running, the first step starts one before the window closes. This is intended.
void DRUI::btnSlotMenuQuit()
{
    btnSlotMenuStop();
    close();
}
