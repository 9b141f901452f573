#include "ui/failure_notice.h"

#include "ui/active_window.h"
#include "ui/cmessagebox.h"
#include "ui/desktop_notification.h"
#include "ui/page_parts.h"
#include "ui/styles.h"

#include <QApplication>
#include <QDebug>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QScreen>
#include <QSystemTrayIcon>
#include <QTextLayout>
#include <QWindow>

namespace {

constexpr QSize kBoxSize(500, 150); // at least
constexpr QSize kTextRoom(425, 60); // for the text in it
constexpr int kTypingPauseMs = 1500;

// Breaks lines like a label, and within words that are longer than a line, such as a path.
QString Wrapped(const QString& text, const QFont& font, int width)
{
    QTextOption wrapping;
    wrapping.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    QStringList lines;
    for (const QString& paragraph : text.split('\n')) {
        QTextLayout layout(paragraph, font);
        layout.setTextOption(wrapping);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width);
            lines << paragraph.mid(line.textStart(), line.textLength()).trimmed();
        }
        layout.endLayout();
    }
    return lines.join('\n');
}

// As far as possible: its left and upper edges in any case.
QRect MovedInto(const QRect& screen, QRect box)
{
    box.moveRight(qMin(box.right(), screen.right()));
    box.moveBottom(qMin(box.bottom(), screen.bottom()));
    box.moveTo(qMax(box.left(), screen.left()), qMax(box.top(), screen.top()));
    return box;
}

// Such a window is above those that stay on top while it has the keyboard.
bool IsCoveredByFullScreen(const QScreen& screen)
{
    const QRect place = screen.geometry();
    const QSize pixels = place.size() * screen.devicePixelRatio();
    return ActiveWindowPlace().contains(QRect(place.topLeft(), pixels));
}

// There is no window that stays on top, only a dialog above the window that it belongs to.
bool IsWayland()
{
    return QGuiApplication::platformName().startsWith("wayland");
}

} // namespace

FailureNotice::FailureNotice(QWidget& window, const QWidget& standIn)
    : m_window(window),
      m_standIn(standIn)
{
    m_window.installEventFilter(this);
}

FailureNotice::~FailureNotice() = default;

void FailureNotice::Tell(const QString& message)
{
    qDebug() << message;
    ShowBox(message);
    Notify(message);
}

void FailureNotice::Close()
{
    m_pBox.reset();
}

void FailureNotice::ShowBox(const QString& message)
{
    m_pBox = std::make_unique<CMessageBox>();
    m_pBox->setObjectName("m_pFailureBox");
    m_pBox->setWindowFlag(Qt::WindowStaysOnTopHint);
    if (IsCoveredByFullScreen(*m_window.screen())) {
        m_pBox->setWindowFlag(Qt::BypassWindowManagerHint);
    }
    // A key that is meant for another program must not answer the box. Wayland ignores this.
    m_pBox->setAttribute(Qt::WA_ShowWithoutActivating);
    if (QApplication::activeModalWidget() != nullptr) {
        m_pBox->setModal(true); // otherwise it would take no input
    }
    const QFont font = CalibriFont(12);
    const QString text = Wrapped(message, font, kTextRoom.width());
    const int height = QFontMetrics(font).size(0, text).height();
    const QSize size(kBoxSize.width(), kBoxSize.height() + qMax(0, height - kTextRoom.height()));
    m_pBox->setFixedSize(size);
    const QPoint place = m_window.pos() + QPoint(m_window.width() / 8, m_window.height() / 8);
    m_pBox->setGeometry(MovedInto(m_window.screen()->availableGeometry(), {place, size}));
    m_pBox->InitInfoDialog(text);
    m_pBox->setAccessibleName(message); // without the breaks
    ShowAboveWindow();
    m_pBox->raise();
    m_sinceKey.start();
    m_bDropsKey = true;
    m_pBox->windowHandle()->installEventFilter(this);
}

void FailureNotice::ShowAboveWindow()
{
    if (IsWayland() && m_window.isVisible()) {
        m_pBox->winId(); // creates what stands for it in the window system
        m_pBox->windowHandle()->setTransientParent(m_window.windowHandle());
    }
    m_pBox->show();
}

void FailureNotice::FollowWindow()
{
    if (IsWayland() && m_pBox != nullptr && m_pBox->isVisible()) {
        m_pBox->hide(); // compositors read whose dialog it is when it appears
        ShowAboveWindow();
    }
}

bool FailureNotice::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &m_window) {
        if (event->type() == QEvent::Show) { // it will be visible after this event
            QMetaObject::invokeMethod(this, "FollowWindow", Qt::QueuedConnection);
        }
        return false;
    }
    const bool isPress = event->type() == QEvent::KeyPress;
    if (!isPress && event->type() != QEvent::KeyRelease) {
        return QObject::eventFilter(watched, event);
    }
    const bool isTyping = m_sinceKey.restart() < kTypingPauseMs;
    if (isPress && !static_cast<QKeyEvent*>(event)->isAutoRepeat()) {
        m_bDropsKey = isTyping;
    }
    return m_bDropsKey; // a release goes the way of its press
}

// Some desktops take the text for markup. It contains file names and the tool's output.
void FailureNotice::Notify(QString message) const
{
    message.replace('<', QChar(0x2039));
    if (m_standIn.isVisible()) {
        ShowDesktopNotification(kProductName, message);
        return;
    }
    for (auto* icon : m_window.findChildren<QSystemTrayIcon*>()) {
        if (icon->isVisible() && QSystemTrayIcon::supportsMessages()) {
            icon->showMessage(kProductName, message, QSystemTrayIcon::Warning);
            return;
        }
    }
}
