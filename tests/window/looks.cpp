#include "tests/window/looks.h"

#include "tests/window/pictures.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QTableWidget>

namespace {

QString Text(const QRect& rect)
{
    return QString("%1, %2, %3 x %4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

QString Text(const QSize& size)
{
    return QString("%1 x %2").arg(size.width()).arg(size.height());
}

QString Text(const QFont& font)
{
    QString weight;
    if (font.weight() == QFont::Bold) {
        weight = " bold";
    } else if (font.weight() != QFont::Normal) {
        weight = QString(" weight %1").arg(font.weight());
    }
    return QString("%1 %2%3%4")
        .arg(font.family())
        .arg(font.pointSize())
        .arg(weight, font.italic() ? " italic" : "");
}

QString Text(Qt::Alignment alignment)
{
    return QString("0x%1").arg(static_cast<int>(alignment), 0, 16);
}

QString TextOf(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget)) {
        return label->text();
    }
    if (const auto* button = qobject_cast<const QPushButton*>(widget)) {
        return button->text();
    }
    const auto* field = qobject_cast<const QLineEdit*>(widget);
    return field == nullptr ? QString() : field->text();
}

// As a line of C++ would have it: tabs and line ends can be seen.
QString Quoted(QString text)
{
    return '"' + text.replace('\n', "\\n").replace('\t', "\\t") + '"';
}

QString TableText(const QTableWidget& table)
{
    QStringList labels;
    for (int column = 0; column < table.columnCount(); ++column) {
        labels << table.horizontalHeaderItem(column)->text();
    }
    const QHeaderView& header = *table.horizontalHeader();
    QStringList parts;
    parts << "columns " + labels.join('/');
    parts << QString("first %1 wide").arg(table.columnWidth(0));
    parts << (header.stretchLastSection() ? "last stretched" : "last not stretched");
    parts << (header.defaultAlignment() == Qt::AlignLeft ? "labels left" : "labels not left");
    parts << (table.verticalHeader()->isHidden() ? "no row numbers" : "row numbers");
    parts << (table.selectionBehavior() == QAbstractItemView::SelectRows ? "whole rows" : "cells");
    parts << (table.selectionMode() == QAbstractItemView::SingleSelection ? "one" : "several");
    parts << (table.editTriggers() == QAbstractItemView::NoEditTriggers ? "fixed" : "editable");
    parts << (table.wordWrap() ? "names on several lines" : "names on one line");
    parts << "header " + Text(header.font());
    return parts.join(", ");
}

// One page's table, row by row.
class Comparison
{
public:
    explicit Comparison(QString page) : m_page(std::move(page)) {}

    void Compare(const Look& look)
    {
        m_what = m_page + ", " + look.what;
        if (look.widget == nullptr) {
            m_lines << m_what + ": is missing";
            return;
        }
        const QWidget& widget = *look.widget;
        if (look.parent != nullptr && widget.parentWidget() != look.parent) {
            m_lines << m_what + ": stands in another widget";
        }
        ComparePlace(look, widget);
        CompareText(look, widget);
        Tell("style", Quoted(widget.styleSheet()), Quoted(look.style), !look.style.isNull());
        Tell("cursor", widget.cursor().shape(), look.cursor);
        Tell("enabled", widget.isEnabledTo(widget.window()), std::optional(look.enabled));
        Tell("shown", widget.isVisibleTo(widget.parentWidget()), std::optional(look.shown));
        if (const auto* table = qobject_cast<const QTableWidget*>(&widget)) {
            Tell("table", TableText(*table), look.table, !look.table.isNull());
        }
        ComparePicture(look, widget);
        for (const QString& call : look.calls) {
            CompareCall(look.widget, call);
        }
    }

    QString Lines() const { return m_lines.join('\n'); }

private:
    void Tell(const char* property, const QString& is, const QString& should, bool described)
    {
        if (described && is != should) {
            m_lines << m_what + ": " + property + " is " + is + ", should be " + should;
        }
    }

    template <class T>
    void Tell(const char* property, const T& is, const std::optional<T>& should)
    {
        if (should.has_value()) {
            Tell(property, QString::number(is), QString::number(*should), true);
        }
    }

    void ComparePlace(const Look& look, const QWidget& widget)
    {
        Tell("place", Text(widget.geometry()), Text(look.place), !look.place.isNull());
        Tell("minimum size", Text(widget.minimumSize()), Text(look.minimum),
             look.minimum.isValid());
        const bool isFixed = widget.minimumSize() == widget.maximumSize();
        Tell("fixed size", isFixed ? Text(widget.minimumSize()) : "not fixed", Text(look.fixed),
             look.fixed.isValid());
    }

    void CompareText(const Look& look, const QWidget& widget)
    {
        Tell("font", Text(widget.font()), look.font, !look.font.isNull());
        Tell("text", Quoted(TextOf(&widget)), Quoted(look.text), !look.text.isNull());
        Tell("colour", widget.palette().color(widget.foregroundRole()).name(), look.colour,
             !look.colour.isNull());
        if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
            if (look.alignment.has_value()) {
                Tell("alignment", Text(label->alignment()), Text(*look.alignment), true);
            }
            Tell("word wrap", label->wordWrap(), look.wraps);
        }
        if (const auto* button = qobject_cast<const QPushButton*>(&widget)) {
            Tell("flat", button->isFlat(), look.flat);
        }
        if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
            Tell("text cursor", field->cursorPosition(), look.textCursor);
        }
    }

    void ComparePicture(const Look& look, const QWidget& widget)
    {
        if (look.picture.isNull()) {
            return;
        }
        QSize size;
        QString difference;
        if (const auto* button = qobject_cast<const QPushButton*>(&widget)) {
            size = button->iconSize();
            difference = PictureDifference(m_what, button->icon(), size, look.picture);
        } else if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
            const QPixmap shown = label->pixmap(Qt::ReturnByValue);
            size = shown.deviceIndependentSize().toSize();
            difference = PictureDifference(m_what, shown, look.picture);
            Tell("density of the picture", QString::number(shown.devicePixelRatio()),
                 QString::number(widget.devicePixelRatioF()), true);
        }
        if (!difference.isEmpty()) {
            m_lines << difference;
        }
        Tell("picture's size", Text(size), Text(look.pictureSize), look.pictureSize.isValid());
    }

    void CompareCall(QWidget* widget, const QString& call)
    {
        const QStringList parts = call.split(" > ");
        const QByteArray signal = '2' + parts.first().toLatin1();
        const QByteArray slot = '1' + parts.last().toLatin1();
        if (!QObject::disconnect(widget, signal, widget->window(), slot)) {
            m_lines << m_what + ": does not call " + parts.last() + " when " + parts.first();
            return;
        }
        QObject::connect(widget, signal, widget->window(), slot); // as it was
    }

    QString m_page;
    QString m_what;
    QStringList m_lines;
};

} // namespace

QString Differences(const QString& page, const QList<Look>& looks)
{
    Comparison comparison(page);
    for (const Look& look : looks) {
        comparison.Compare(look);
    }
    return comparison.Lines();
}

QWidget* HolderOf(const QWidget* widget)
{
    return widget == nullptr ? nullptr : widget->parentWidget();
}

QWidget* LayoutItem(const QWidget* page, const QList<int>& path)
{
    QLayout* layout = page->layout();
    QLayoutItem* item = layout;
    for (const int position : path) {
        item = layout == nullptr ? nullptr : layout->itemAt(position);
        layout = item == nullptr ? nullptr : item->layout();
    }
    return item == nullptr ? nullptr : item->widget();
}
