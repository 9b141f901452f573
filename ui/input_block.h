#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class QAbstractButton;
class QWidget;

// While it exists, a window takes no mouse, keys, shortcuts and drops, but is painted and can be
// moved, minimised and closed. Other windows, such as dialogs and the tray's menu, are not
// affected.
class InputBlock : public QObject
{
    Q_OBJECT

public:
    enum class Input {
        Dropped,
        Deferred // clicks and keys are delivered afterwards, before newer ones
    };

    /// The buttons in `open` can still be clicked, which forgets the input deferred so far: it was
    /// meant for what the button leaves. Dropped input forgets it too.
    InputBlock(QWidget& window, Input input, QList<QAbstractButton*> open = {});
    ~InputBlock() override;
    Q_DISABLE_COPY_MOVE(InputBlock)

    /// Whether the window's slots must not start anything that waits: they may be called without
    /// input, too, such as by a screen reader or a field that loses focus.
    static bool IsOn() { return m_nBlocks > 0; }

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    QAbstractButton* OpenButtonAt(QObject* receiver, const QEvent& event) const;
    bool ClicksOpenButton(QObject* receiver, const QEvent& event);

    QWidget& m_window;
    const bool m_drops;
    QList<QAbstractButton*> m_open;
    QPointer<QAbstractButton> m_pPressed;
    static inline int m_nBlocks = 0;
    static inline int m_nDropping = 0;
};
