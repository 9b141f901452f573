#pragma once

#include "tests/window/find_widget.h"

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

// How a page or dialog should look: a table with one row per widget. Properties not in a row are
// not compared.

struct Look
{
    QString what;              // the widget's name in messages
    QWidget* widget = nullptr; // null is reported as missing
    const QWidget* parent = nullptr;
    QRect place = {}; // relative to its parent
    QSize minimum = {};
    QSize fixed = {};
    QString font = {};                           // "Calibri 12 bold"
    QString text = {};                           // of a label, button or field
    QString colour = {};                         // text colour, "#rrggbb"
    QString style = {};                          // its own style sheet
    QString picture = {};                        // name of the image
    QSize pictureSize = {};                      // of a button's icon or a label's image
    QString table = {};                          // see TableText()
    QStringList calls = {};                      // "clicked() > slot()", a slot of its window
    std::optional<Qt::Alignment> alignment = {}; // a label's
    std::optional<Qt::CursorShape> cursor = {};
    std::optional<bool> flat = {};
    std::optional<bool> wraps = {};
    std::optional<int> textCursor = {}; // cursor position of a field
    bool enabled = true;
    bool shown = true;
};

/// The differences from the table, one per line, such as "record page, save caption: font is
/// Calibri 11 bold, should be Calibri 12 bold". Empty if there are none.
QString Differences(const QString& page, const QList<Look>& looks);

/// Compares the layout of a page with a text of one item per line, indented by two blanks per
/// level. A layout is "column" or "row", with its margins unless they are 0 and its spacing if it
/// is not the default. A widget is named like its row in `looks`. Returns the first difference in
/// the format above.
QString LayoutDifferences(const QString& page, const QLayout* layout, const QList<Look>& looks,
                          const QStringList& expected);

/// The parent of this widget; null for null.
QWidget* HolderOf(const QWidget* widget);

/// The widget at this place of the page's layout, such as {0, 1} for the second item of the first
/// layout. Spacers count. Null if there is none.
QWidget* LayoutItem(const QWidget* page, const QList<int>& path);
