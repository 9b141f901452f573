#include "ui/deferred_input.h"

#include "ui/input_block.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>
#include <QWindow>

namespace {

bool IsKey(const QEvent& event)
{
    return event.type() == QEvent::KeyPress || event.type() == QEvent::KeyRelease;
}

bool IsClickOrKey(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::InputMethod:
        return true;
    default:
        return IsKey(event);
    }
}

// Touches and pens are not here: Qt turns them into mouse events.
bool MustNotOvertake(const QEvent& event)
{
    switch (event.type()) {
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
        return true;
    default:
        return IsClickOrKey(event);
    }
}

// What clone() makes of a mouse event is no copy: it gets the global position of each later one.
// Without Qt's mark, the press before a double click reaches the widget too, which does no harm.
std::function<std::unique_ptr<QEvent>()> CopyOf(const QEvent& event)
{
    if (const auto* mouse = dynamic_cast<const QMouseEvent*>(&event)) {
        return [type = mouse->type(), place = mouse->position(), scene = mouse->scenePosition(),
                global = mouse->globalPosition(), button = mouse->button(),
                buttons = mouse->buttons(), modifiers = mouse->modifiers()] {
            return std::make_unique<QMouseEvent>(type, place, scene, global, button, buttons,
                                                 modifiers);
        };
    }
    if (const auto* wheel = dynamic_cast<const QWheelEvent*>(&event)) {
        return
            [place = wheel->position(), global = wheel->globalPosition(),
             pixels = wheel->pixelDelta(), angle = wheel->angleDelta(), buttons = wheel->buttons(),
             modifiers = wheel->modifiers(), phase = wheel->phase(), inverted = wheel->inverted()] {
                return std::make_unique<QWheelEvent>(place, global, pixels, angle, buttons,
                                                     modifiers, phase, inverted);
            };
    }
    return [copy = std::shared_ptr<const QEvent>(event.clone())] {
        return std::unique_ptr<QEvent>(copy->clone());
    };
}

} // namespace

DeferredInput& DeferredInput::Of(QWidget& window)
{
    auto* found = window.findChild<DeferredInput*>(QString(), Qt::FindDirectChildrenOnly);
    return found != nullptr ? *found : *new DeferredInput(window);
}

DeferredInput::DeferredInput(QWidget& window) : QObject(&window), m_window(window)
{
    QCoreApplication::instance()->installEventFilter(this);
}

void DeferredInput::Keep(QObject* receiver, const QEvent& event)
{
    const bool isRepeated = IsKey(event) && static_cast<const QKeyEvent&>(event).isAutoRepeat();
    if (IsClickOrKey(event) && !isRepeated) {
        m_events.push_back({receiver, CopyOf(event)});
    }
}

void DeferredInput::Clear()
{
    m_events.clear();
}

void DeferredInput::Resume()
{
    if (!m_events.empty() && !m_isScheduled && !InputBlock::IsOn()) {
        m_isScheduled = true;
        QMetaObject::invokeMethod(this, "DeliverFirst", Qt::QueuedConnection);
    }
}

// All input of the window system comes to the native window first.
bool DeferredInput::eventFilter(QObject* receiver, QEvent* event)
{
    if (m_events.empty() || InputBlock::IsOn() || event == m_delivered ||
        receiver != m_window.windowHandle() || !MustNotOvertake(*event)) {
        return false;
    }
    m_events.push_back({receiver, CopyOf(*event)});
    return true;
}

// The next one is scheduled first: what this one does may run an event loop. A block that begins
// there keeps the rest until its end.
void DeferredInput::DeliverFirst()
{
    m_isScheduled = false;
    if (InputBlock::IsOn()) {
        return;
    }
    if (!TakesInput()) {
        Clear();
    }
    if (m_events.empty()) {
        return;
    }
    const Kept first = std::move(m_events.front());
    m_events.pop_front();
    Resume();
    if (first.receiver == nullptr) {
        return;
    }
    const QPointer<DeferredInput> self(this);
    const std::unique_ptr<QEvent> event = first.make();
    const QEvent* outer = std::exchange(m_delivered, event.get());
    QCoreApplication::sendEvent(first.receiver, event.get());
    if (self != nullptr) {
        m_delivered = outer;
    }
}

// As the window system would see it: no input comes to a hidden window or one behind a dialog.
bool DeferredInput::TakesInput() const
{
    return m_window.isVisible() && QApplication::activeModalWidget() == nullptr;
}
