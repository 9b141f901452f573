#include "ui/position_slider.h"

#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionSlider>

PositionSlider::PositionSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent)
{
    connect(this, SIGNAL(actionTriggered(int)), this, SLOT(TellMove()));
}

void PositionSlider::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton) {
        return;
    }
    setSliderDown(true);
    const int x = qRound(event->position().x());
    const QRect handle = HandleRect();
    if (x >= handle.left() &&
        x <= handle.right()) { // also above and below the handle, which is small
        m_nGrip = x - handle.left();
    } else {
        m_nGrip = handle.width() / 2;
        MoveTo(x);
    }
}

void PositionSlider::mouseMoveEvent(QMouseEvent* event)
{
    if (isSliderDown()) {
        MoveTo(qRound(event->position().x()));
    }
}

void PositionSlider::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        setSliderDown(false);
    }
}

QRect PositionSlider::HandleRect() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    return style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this);
}

// Moves the point where the handle is held as close to `x` as the range allows.
void PositionSlider::MoveTo(int x)
{
    setSliderPosition(QStyle::sliderValueFromPosition(minimum(), maximum(), x - m_nGrip,
                                                      width() - HandleRect().width()));
}

// While the handle is held, QSlider has already emitted the signal.
void PositionSlider::TellMove()
{
    if (!isSliderDown()) {
        Q_EMIT sliderMoved(sliderPosition());
    }
}
