#include "ui/input_block.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

#include <algorithm>

namespace {

bool IsClickOrKey(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return true;
    default:
        return false;
    }
}

bool IsInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TabletPress:
    case QEvent::TabletMove:
    case QEvent::TabletRelease:
    case QEvent::NativeGesture:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
        return true;
    default:
        return IsClickOrKey(type);
    }
}

// Input reaches the native window first, which moves the focus at a click. Filtered there, it does
// not.
QWidget* WindowOf(QObject* receiver, QWidget& window)
{
    if (receiver == window.windowHandle()) {
        return &window;
    }
    auto* widget = qobject_cast<QWidget*>(receiver);
    return widget == nullptr ? nullptr : widget->window();
}

} // namespace

InputBlock::InputBlock(QWidget& window, Input input, QList<QWidget*> open)
    : m_window(window),
      m_input(input),
      m_open(std::move(open))
{
    ++m_nBlocks;
    QCoreApplication::instance()->installEventFilter(this);
}

InputBlock::~InputBlock()
{
    --m_nBlocks;
    for (auto& [receiver, event] : m_kept) {
        if (receiver != nullptr) {
            QCoreApplication::postEvent(receiver, event.release());
        }
    }
}

bool InputBlock::eventFilter(QObject* receiver, QEvent* event)
{
    if (!IsInput(event->type()) || WindowOf(receiver, m_window) != &m_window ||
        IsAtOpenWidget(receiver, *event)) {
        return false;
    }
    if (m_input == Input::Deferred && IsClickOrKey(event->type())) {
        m_kept.emplace_back(receiver, event->clone());
    }
    event->ignore(); // nothing can be dropped here
    return true;
}

// A release whose press came before the block is not one for an open widget.
bool InputBlock::IsAtOpenWidget(const QObject* receiver, const QEvent& event)
{
    const bool isPress =
        event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
    const bool isRelease = event.type() == QEvent::MouseButtonRelease;
    if (!isPress && !isRelease) {
        return false;
    }
    const auto* widget = qobject_cast<const QWidget*>(receiver);
    if (widget == nullptr) {
        widget = m_window.childAt(static_cast<const QMouseEvent&>(event).position().toPoint());
    }
    const bool isOpen = std::any_of(m_open.begin(), m_open.end(),
                                    [widget](const QWidget* open) { return open == widget; });
    if (isPress) {
        m_bIsPressed = isOpen;
    }
    return m_bIsPressed && (isOpen || isRelease);
}
