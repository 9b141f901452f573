#include "tests/window/page_looks.h"

#include <QTest>

namespace {

Look HeaderButton(const QWidget* page, const QString& name, int left)
{
    const QString picture = name.toLower() + ".png";
    const QSize whole = QImage(":/image/" + picture).size();
    const QSize size(static_cast<int>(whole.width() / 2.5), static_cast<int>(whole.height() / 2.5));
    return {.what = name,
            .widget = ButtonNamed(page, name),
            .parent = LayoutItem(page, {0, 0}),
            .place = {QPoint(left, 40), size},
            .font = "Calibri 11 bold",
            .text = "",
            .style = kDark,
            .picture = picture,
            .pictureSize = size,
            .calls = {"clicked() > btn" + name + "Slot()"},
            .cursor = Qt::PointingHandCursor,
            .flat = true};
}

} // namespace

QList<Look> Header(const QWidget* page, const PageShape& shape)
{
    QLabel* title = LabelReading(page, "Lumenfold Screen Recorder");
    QWidget* strip = HolderOf(title);
    QList<Look> looks;
    looks << Look{.what = "header strip",
                  .widget = LayoutItem(page, {0, 0}),
                  .parent = page,
                  .minimum = {shape.width, 70}};
    looks << Look{.what = "separator",
                  .widget = LayoutItem(page, {0, 1}),
                  .parent = page,
                  .fixed = {shape.width, 2},
                  .style = kGrey};
    looks << Look{.what = "logo",
                  .widget = strip == nullptr ? nullptr : strip->childAt(20, 10),
                  .parent = strip,
                  .place = {15, 6, 30, 50},
                  .picture = "logo.png",
                  .pictureSize = {30, 50},
                  .alignment = Qt::AlignLeft};
    looks << Look{.what = "title",
                  .widget = title,
                  .parent = LayoutItem(page, {0, 0}),
                  .place = {65, 12, 300, 30},
                  .font = "Calibri 13",
                  .colour = kWhite,
                  .alignment = Qt::AlignLeft};
    looks << Look{.what = "version",
                  .widget = LabelReading(page, "Version 6.8.8.8"),
                  .parent = strip,
                  .place = {shape.width - 100, 0, shape.versionWidth, 30},
                  .font = "Calibri 10",
                  .colour = kWhite};
    looks << HeaderButton(page, "About", 970) << HeaderButton(page, "Support", 940)
          << HeaderButton(page, "Help", 910);
    return looks;
}

// The strip along the bottom edge, with the maker's line and a separator: the home and cut pages
// have both, the record and merge pages one of them.
QList<Look> Footer(const QWidget* page, const PageShape& shape)
{
    const QString text = "Lumenfold Screen Recorder by Tarvessa";
    QList<int> last{page->layout()->count() - 1};
    if (const QLayout* box = page->layout()->itemAt(last.first())->layout()) {
        last << box->count() - 1;
    }
    QWidget* footer = LayoutItem(page, last);
    QList<Look> looks;
    looks << Look{.what = "footer",
                  .widget = footer,
                  .parent = page,
                  .minimum = {shape.width, 40},
                  .style = kDark};
    QList<QLabel*> parts = footer->findChildren<QLabel*>();
    if (shape.notice) {
        QLabel* notice = LabelReading(footer, text);
        parts.removeOne(notice);
        looks << Look{.what = "maker's line",
                      .widget = notice,
                      .parent = footer,
                      .place = {10, 10, 1000, 30},
                      .font = "Calibri 11",
                      .colour = kWhite,
                      .alignment = Qt::AlignHCenter};
    }
    if (shape.line) {
        QLabel* line = parts.isEmpty() ? nullptr : parts.takeFirst();
        looks << Look{.what = "line across the footer",
                      .widget = line,
                      .parent = footer,
                      .place = {0, 0, 1000, 2},
                      .text = "",
                      .style = kGrey};
    }
    if (!parts.isEmpty()) {
        QTest::qFail("the footer holds more than it should", __FILE__, __LINE__);
    }
    return looks;
}

Look BarButton(const QWidget* page, const QString& text, const QRect& place, const QString& slot)
{
    return {.what = text,
            .widget = ButtonReading(page, text),
            .place = place,
            .font = "Calibri 12 bold",
            .style = GreyButtonStyle("\t\t\t\t\t\t\t\t   "),
            .calls = {"clicked() > " + slot},
            .cursor = Qt::PointingHandCursor,
            .flat = true};
}

QString GreyButtonStyle(const QString& gap)
{
    return "QPushButton{background-color:rgb(191, 191, 191);" + gap +
           "border-radius: 10px; border: 2px groove white;" + gap +
           "border-style: outset;}QPushButton:hover{background-color:rgb(156, 156, 156); }"
           "QPushButton:pressed{background-color:rgb(156, 156, 156);border: 2px groove white;" +
           gap + "border-style: inset; }";
}

// One failure per difference, because QtTest cuts off long messages.
void Expect(const QString& differences)
{
    for (const QString& line : differences.split('\n', Qt::SkipEmptyParts)) {
        QTest::qFail(qPrintable(line), __FILE__, __LINE__);
    }
}
