#pragma once

#include <QLabel>

/// `line`, which ends in a path, as it fits into `width` pixels. What does not fit is left out in
/// its middle, but the file's name is kept if there is room for it.
QString ElidedLine(const QString& line, const QFontMetrics& metrics, int width);

// Paints each line of its text on one line, elided. text() is the whole text.
class PathLabel : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void paintEvent(QPaintEvent* event) override;
};
