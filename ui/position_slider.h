#pragma once

#include <QSlider>

// A slider that emits sliderMoved() for every move by the user, with keyboard, wheel or mouse. A
// move can start anywhere on the groove. Setting the value does not count.
class PositionSlider : public QSlider
{
    Q_OBJECT

public:
    explicit PositionSlider(QWidget* parent = nullptr);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private Q_SLOTS:
    void TellMove();

private:
    void MoveTo(int x);
};
