// The tray icon of the recorder, its menu and its notifications, and the window in place of it.
#include "tests/support/recorder.h"

#include <algorithm>

// The tray moves its icons while it makes room for a new one.
bool Recorder::WaitTrayIcon()
{
    constexpr int looksAtRest = 6;
    QPoint last;
    int looks = 0;
    return WaitUntil([&] {
        const QPoint now = TrayIcon();
        looks = !now.isNull() && now == last ? looks + 1 : 0;
        last = now;
        return looks >= looksAtRest;
    });
}

QPoint Recorder::TrayIcon() const
{
    // The tray's panel contains a window of the program.
    const QList<DesktopWindow> windows = m_desktop.Windows();
    QList<uint32_t> inPanel;
    for (const DesktopWindow& window : windows) {
        if (window.title == "panel" || inPanel.contains(window.parent)) {
            inPanel << window.id;
            if (window.visible && window.program == "lumenfold-recorder") {
                return window.place.center();
            }
        }
    }
    return {};
}

// Menus and notifications are not managed. Neither is the tray icon, but it is not a child of the
// root window.
QList<DesktopWindow> Recorder::Unmanaged() const
{
    QList<DesktopWindow> found;
    const QList<DesktopWindow> windows = m_desktop.Windows();
    for (const DesktopWindow& window : windows) {
        if (window.visible && !window.managed && window.parent == windows.first().id &&
            window.program == "lumenfold-recorder") {
            found << window;
        }
    }
    return found;
}

std::optional<DesktopWindow> Recorder::Menu() const
{
    for (const DesktopWindow& window : Unmanaged()) {
        if (!m_desktop.IsTooltip(window.id)) {
            return window;
        }
    }
    return std::nullopt;
}

bool Recorder::HasNotification() const
{
    const QList<DesktopWindow> windows = Unmanaged();
    return std::any_of(windows.begin(), windows.end(),
                       [this](const auto& window) { return m_desktop.IsTooltip(window.id); });
}

bool Recorder::ChooseInTray(int entry)
{
    // Repeats a click the program was not ready for, as a user would.
    for (int press = 0; press < 3 && !Menu(); ++press) {
        if (!WaitTrayIcon()) {
            return false;
        }
        m_desktop.Click(TrayIcon(), 3);
        WaitUntil([this] { return Menu().has_value(); }, 5000);
    }
    if (!Menu()) {
        return false;
    }
    const QRect menu = Menu()->place;
    m_desktop.Click({menu.center().x(), menu.top() + menu.height() * (2 * entry + 1) / 6});
    m_sinceChoice.start();
    return WaitUntil([this] { return !Menu(); });
}

bool Recorder::ClickInStandIn(double share)
{
    constexpr int buttonsAboveTheBottom = 25;
    const auto standIn = m_desktop.AtRest(kStandIn);
    if (standIn) {
        m_desktop.Click(standIn->place.bottomLeft() +
                        QPoint(int(standIn->place.width() * share), -buttonsAboveTheBottom));
        m_sinceChoice.start();
    }
    return standIn.has_value();
}
