#pragma once

#include <QPointer>
#include <QWidget>

// A ring around the control that has the keyboard's focus: the style sheets draw none. It is there
// while the window is operated by keyboard, and lies over everything without being in anyone's way.
class FocusRing : public QWidget
{
    Q_OBJECT

public:
    /// A ring for `window`, which owns it. Nothing is ringed before Watch() is called.
    explicit FocusRing(QWidget* window);

    /// Rings the controls that `window` has now. To be called again after more are built.
    void Watch();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void ShowAround(QWidget* control);
    void Follow();

    QPointer<QWidget> m_control; // the ringed one
};
