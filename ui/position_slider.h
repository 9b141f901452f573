#pragma once

#include <QSlider>

// A slider that emits sliderMoved() for keyboard and wheel as well as for the mouse. A press on the
// groove moves the handle there. A press on the handle moves nothing until the mouse moves. Setting
// the value does not count as a move.
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
    QRect HandleRect() const;
    void MoveTo(int x);

    int m_nGrip = 0; // where the mouse holds the handle, from its left edge
};
