#include "ui/focus_ring.h"

#include <QFocusEvent>
#include <QPainter>

namespace {

constexpr int kWidth = 4; // outer half white, inner half blue, so it is visible on any grey

// For all windows: a dialog opened by a key shows at once which button Enter presses.
bool lastInputWasKey = false;

// Other reasons, such as an activated window, say nothing about the device.
void Judge(Qt::FocusReason reason)
{
    if (reason == Qt::MouseFocusReason) {
        lastInputWasKey = false;
    } else if (reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
               reason == Qt::ShortcutFocusReason) {
        lastInputWasKey = true;
    }
}

} // namespace

FocusRing::FocusRing(QWidget* window) : QWidget(window)
{
    setObjectName("m_pFocusRing");
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    hide();
}

void FocusRing::Watch()
{
    for (auto* control : parentWidget()->findChildren<QWidget*>()) {
        if (control->focusPolicy() != Qt::NoFocus && control->window() == window()) {
            control->installEventFilter(this); // has no effect the second time
        }
    }
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event)
{
    auto* control = static_cast<QWidget*>(watched);
    switch (event->type()) {
    case QEvent::FocusIn:
        Judge(static_cast<QFocusEvent*>(event)->reason());
        if (lastInputWasKey) {
            ShowAround(control);
        }
        break;
    case QEvent::KeyPress:
        lastInputWasKey = true;
        if (control->hasFocus()) {
            ShowAround(control);
        }
        break;
    case QEvent::MouseButtonPress:
        lastInputWasKey = false;
        hide();
        break;
    case QEvent::FocusOut:
    case QEvent::Hide:
        if (control == m_control) {
            hide();
        }
        break;
    case QEvent::Move:
    case QEvent::Resize:
        if (control == m_control) {
            Follow();
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void FocusRing::ShowAround(QWidget* control)
{
    m_control = control;
    Follow();
    raise();
    show();
}

void FocusRing::Follow()
{
    const QPoint corner = m_control->mapTo(parentWidget(), QPoint());
    setGeometry(QRect(corner, m_control->size())
                    .adjusted(-kWidth, -kWidth, kWidth, kWidth)
                    .intersected(parentWidget()->rect()));
}

void FocusRing::paintEvent(QPaintEvent* /*event*/)
{
    constexpr double half = kWidth / 2.0;
    constexpr double radius = 10;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF outer = QRectF(rect()).adjusted(half / 2, half / 2, -half / 2, -half / 2);
    painter.setPen(QPen(Qt::white, half));
    painter.drawRoundedRect(outer, radius, radius);
    painter.setPen(QPen(QColor(23, 103, 184), half));
    painter.drawRoundedRect(outer.adjusted(half, half, -half, -half), radius - half, radius - half);
}
