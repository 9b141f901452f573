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
    if (event->button() == Qt::LeftButton) {
        setSliderDown(true);
        MoveTo(qRound(event->position().x()));
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

// Moves the centre of the handle as close to `x` as the range allows.
void PositionSlider::MoveTo(int x)
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const int handle =
        style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this).width();
    setSliderPosition(
        QStyle::sliderValueFromPosition(minimum(), maximum(), x - handle / 2, width() - handle));
}

// While the handle is held, QSlider has already emitted the signal.
void PositionSlider::TellMove()
{
    if (!isSliderDown()) {
        Q_EMIT sliderMoved(sliderPosition());
    }
}
