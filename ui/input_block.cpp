#include "ui/input_block.h"

#include "ui/deferred_input.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QWidget>
#include <QWindow>

namespace {

bool IsInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
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
        return false;
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

InputBlock::InputBlock(QWidget& window, Input input, QList<QAbstractButton*> open)
    : m_window(window),
      m_drops(input == Input::Dropped),
      m_open(std::move(open))
{
    ++m_nBlocks;
    if (m_drops) {
        ++m_nDropping;
        DeferredInput::Of(m_window).Clear();
    }
    QCoreApplication::instance()->installEventFilter(this);
}

InputBlock::~InputBlock()
{
    --m_nBlocks;
    m_nDropping -= m_drops ? 1 : 0;
    DeferredInput::Of(m_window).Resume();
}

bool InputBlock::eventFilter(QObject* receiver, QEvent* event)
{
    if (!IsInput(event->type()) || WindowOf(receiver, m_window) != &m_window) {
        return false;
    }
    if (!ClicksOpenButton(receiver, *event) && m_nDropping == 0) {
        DeferredInput::Of(m_window).Keep(receiver, *event);
    }
    event->ignore(); // nothing can be dropped here
    return true;
}

QAbstractButton* InputBlock::OpenButtonAt(QObject* receiver, const QEvent& event) const
{
    QWidget* widget = qobject_cast<QWidget*>(receiver);
    if (widget == nullptr) {
        widget = m_window.childAt(static_cast<const QMouseEvent&>(event).position().toPoint());
    }
    auto* button = qobject_cast<QAbstractButton*>(widget);
    return m_open.contains(button) ? button : nullptr;
}

// Not left to Qt, which sends everything to the widget that was pressed before the block until it
// sees the release.
bool InputBlock::ClicksOpenButton(QObject* receiver, const QEvent& event)
{
    if (event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick) {
        m_pPressed = OpenButtonAt(receiver, event);
        return m_pPressed != nullptr;
    }
    if (event.type() != QEvent::MouseButtonRelease || m_pPressed == nullptr) {
        return false;
    }
    QAbstractButton* released = OpenButtonAt(receiver, event);
    if (std::exchange(m_pPressed, nullptr) == released) {
        DeferredInput::Of(m_window).Clear();
        released->click();
    }
    return true;
}
