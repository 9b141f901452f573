#pragma once

#include <QLabel>
#include <QLayout>
#include <QPushButton>
#include <QRect>
#include <QString>
#include <QStringList>

#include <optional>

// How a page or a dialog should look: a table with one row for each widget. What a row leaves out
// is not compared.

struct Look
{
    QString what;              // the widget's name in messages
    QWidget* widget = nullptr; // null is told as missing
    const QWidget* parent = nullptr;
    QRect place = {}; // in its parent
    QSize minimum = {};
    QSize fixed = {};
    QString font = {};                           // "Calibri 12 bold"
    QString text = {};                           // of a label, button or field
    QString colour = {};                         // of the text, "#rrggbb"
    QString style = {};                          // its own style sheet
    QString picture = {};                        // name of the image
    QSize pictureSize = {};                      // of a button's icon, of a label's picture
    QString table = {};                          // see TableText()
    QStringList calls = {};                      // "clicked() > slot()": of the window it stands in
    std::optional<Qt::Alignment> alignment = {}; // a label's
    std::optional<Qt::CursorShape> cursor = {};
    std::optional<bool> flat = {};
    std::optional<bool> wraps = {};
    std::optional<int> textCursor = {}; // of a field: before this letter
    bool enabled = true;
    bool shown = true;
};

/// What is not as the table says, a line for each difference, such as "record page, save caption:
/// font is Calibri 11 bold, should be Calibri 12 bold"; empty when all is well.
QString Differences(const QString& page, const QList<Look>& looks);

/// The layout of a page as text, one item a line, two blanks deeper in each layout inside another.
/// A layout reads "column" or "row", with its margins unless they are 0 and its spacing where it is
/// not the one that it would have by itself; a widget goes by its row in `looks`. The first
/// difference is told as above.
QString LayoutDifferences(const QString& page, const QLayout* layout, const QList<Look>& looks,
                          const QStringList& expected);

/// A label, a button by its text, a button by its accessible name; null where there is none.
QLabel* LabelReading(const QWidget* root, const QString& text);
QPushButton* ButtonReading(const QWidget* root, const QString& text);
QPushButton* ButtonNamed(const QWidget* root, const QString& name);

/// What holds this widget; null for null.
QWidget* HolderOf(const QWidget* widget);

/// The widget at this place of the page's layout, such as {0, 1} for the second item of the layout
/// that comes first; spaces count. Null where there is none.
QWidget* LayoutItem(const QWidget* page, const QList<int>& path);
