#pragma once

#include <QSlider>

// A slider whose every move by the user counts as one: sliderMoved() is emitted for the keyboard
// and the wheel as well as for the mouse, which may begin anywhere on the groove. Setting the value
// is no move.
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
