#pragma once

#include <QObject>
#include <QPointer>

#include <deque>
#include <functional>
#include <memory>

class QEvent;
class QWidget;

// The clicks and keys that came while a window was blocked (InputBlock). They are delivered from
// the event loop, one by one. Until the last one is, newer input queues up behind them: a release
// must not overtake its press.
class DeferredInput : public QObject
{
    Q_OBJECT

public:
    /// That of the window, which owns it.
    static DeferredInput& Of(QWidget& window);

    /// Keeps a click or key for later. Repetitions of a held key are dropped: the user cannot see
    /// what they do, nor stop them. So is other input, such as the wheel's.
    void Keep(QObject* receiver, const QEvent& event);
    void Clear();

    /// Begins or continues the delivery, unless a block is on, whose end will.
    void Resume();

protected:
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    struct Kept
    {
        QPointer<QObject> receiver;
        std::function<std::unique_ptr<QEvent>()> make;
    };

    explicit DeferredInput(QWidget& window);
    Q_SLOT void DeliverFirst();
    bool TakesInput() const;

    QWidget& m_window;
    std::deque<Kept> m_events;
    const QEvent* m_delivered = nullptr; // at this moment
    bool m_isScheduled = false;
};
