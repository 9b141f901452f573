#pragma once

#include <QPointer>
#include <QWidget>

// A ring around the control with keyboard focus, which the style sheets do not show. Visible while
// the window is used by keyboard, on top of everything and transparent to the mouse.
class FocusRing : public QWidget
{
    Q_OBJECT

public:
    /// Creates a ring for `window`, which owns it. Rings nothing until Watch() is called.
    explicit FocusRing(QWidget* window);

    /// Watches the current controls of `window`. Call it again after adding controls.
    void Watch();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void ShowAround(QWidget* control);
    void Follow();

    QPointer<QWidget> m_control; // the control with the ring
};
