#include "tests/window/looks.h"

#include <QStyle>

#include <algorithm>

namespace {

void AddLayoutLines(const QLayout* layout, const QList<Look>& looks, int inherited,
                    const QString& indent, const QString& factor, QStringList& lines);

void AddItemLine(const QBoxLayout& box, int position, const QList<Look>& looks,
                 const QString& indent, QStringList& lines)
{
    QLayoutItem* item = box.itemAt(position);
    QString factor;
    if (box.stretch(position) != 0) {
        factor = QString(" [%1]").arg(box.stretch(position));
    }
    if (item->alignment() != Qt::Alignment()) {
        factor += " aligned";
    }
    if (const QWidget* widget = item->widget()) {
        const auto row = std::find_if(looks.begin(), looks.end(),
                                      [widget](const Look& look) { return look.widget == widget; });
        lines << indent + (row == looks.end() ? widget->metaObject()->className() : row->what) +
                     factor;
    } else if (item->layout() != nullptr) {
        AddLayoutLines(item->layout(), looks, box.spacing(), indent, factor, lines);
    } else if (const QSpacerItem* space = item->spacerItem()) {
        const bool down = box.direction() == QBoxLayout::TopToBottom;
        const int length = down ? space->sizeHint().height() : space->sizeHint().width();
        const bool stretches =
            space->expandingDirections() & (down ? Qt::Vertical : Qt::Horizontal);
        if (stretches) {
            lines << indent + QString("stretch %1").arg(box.stretch(position));
        } else if (length > 0) { // else a strut: it makes the layout wider, not longer
            lines << indent + QString("space %1").arg(length);
        }
    }
}

void AddLayoutLines(const QLayout* layout, const QList<Look>& looks, int inherited,
                    const QString& indent, const QString& factor, QStringList& lines)
{
    const auto* box = qobject_cast<const QBoxLayout*>(layout);
    if (box == nullptr) {
        lines << indent + "no layout of boxes";
        return;
    }
    QString line = box->direction() == QBoxLayout::TopToBottom ? "column" : "row";
    const QMargins margins = box->contentsMargins();
    if (!margins.isNull()) {
        line += QString(", margins %1 %2 %3 %4")
                    .arg(margins.left())
                    .arg(margins.top())
                    .arg(margins.right())
                    .arg(margins.bottom());
    }
    if (box->spacing() != inherited) {
        line += QString(", spacing %1").arg(box->spacing());
    }
    lines << indent + line + factor;
    for (int i = 0; i < box->count(); ++i) {
        AddItemLine(*box, i, looks, indent + "  ", lines);
    }
}

} // namespace

QString LayoutDifferences(const QString& page, const QLayout* layout, const QList<Look>& looks,
                          const QStringList& expected)
{
    QStringList lines;
    const int usual =
        layout->parentWidget()->style()->pixelMetric(QStyle::PM_LayoutVerticalSpacing);
    AddLayoutLines(layout, looks, usual, {}, {}, lines);
    for (int i = 0; i < qMax(lines.size(), expected.size()); ++i) {
        const QString is = lines.value(i, "not there");
        const QString should = expected.value(i, "not there");
        if (is != should) {
            return QString("%1: line %2 of the layout is \"%3\", should be \"%4\"")
                .arg(page)
                .arg(i + 1)
                .arg(is, should);
        }
    }
    return {};
}
