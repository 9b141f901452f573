#include "ui/path_label.h"

#include <QPainter>
#include <QStyle>

QString ElidedLine(const QString& line, const QFontMetrics& metrics, int width)
{
    const qsizetype name = line.lastIndexOf('/');
    const int room = width - metrics.horizontalAdvance(line.mid(name));
    const QString least = line.left(line.indexOf('/') + 1) + QChar(0x2026);
    return name < 0 || room < metrics.horizontalAdvance(least)
               ? metrics.elidedText(line, Qt::ElideMiddle, width)
               : metrics.elidedText(line.left(name), Qt::ElideRight, room) + line.mid(name);
}

void PathLabel::paintEvent(QPaintEvent* /*event*/)
{
    QStringList lines = text().split('\n');
    for (QString& line : lines) {
        line = ElidedLine(line, fontMetrics(), contentsRect().width());
    }
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(),
                          isEnabled(), lines.join('\n'), foregroundRole());
}
