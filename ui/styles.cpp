#include "ui/styles.h"

#include <QApplication>
#include <QPalette>

// The grey button's style sheet exists in two forms that differ only in white space, the home
// page's and the one for all others. Both are kept to the letter.
#define HOME_GAP "\t\t\t\t\t\t\t  "
#define SLIDER_GAP "\t\t\t\t\t\t\t\t"
#define MAIN_GAP "\t\t\t\t\t\t\t\t   "

const QString window_style = "background-color: rgb(51, 52, 55);";
const QString panel_style = "background-color: rgb(191, 191, 191);";
const QString field_style = "border: 2px groove white;";
const QString backGroud_style = "background-color: rgb(28, 28, 28);";

const QString home_entry_style =
    "QPushButton{background-color:rgb(191, 191, 191);" HOME_GAP
    "border-radius: 10px; border: 2px groove white;" HOME_GAP "border-style: outset;}"
    "QPushButton:hover{background-color:rgb(156, 156, 156); }"
    "QPushButton:pressed{background-color:rgb(156, 156, 156);border: 2px groove white;" HOME_GAP
    "border-style: inset; }";

const QString main_button_style =
    "QPushButton{background-color:rgb(191, 191, 191);" MAIN_GAP
    "border-radius: 10px; border: 2px groove white;" MAIN_GAP "border-style: outset;}"
    "QPushButton:hover{background-color:rgb(156, 156, 156); }"
    "QPushButton:pressed{background-color:rgb(156, 156, 156);border: 2px groove white;" MAIN_GAP
    "border-style: inset; }";

const QString action_button_style =
    "QPushButton{background-color:rgb(30, 144, 255);color: white; border-radius: 10px; border: 2px "
    "groove white; "
    "border-style: outset;}QPushButton:hover{background-color:rgb(220, 220, 220); color: white;}"
    "QPushButton:pressed{background-color:rgb(30, 144, 255); color: white;border: 2px groove white;"
    "border-style: inset; }";

// The tabs are part of the text, although they have no effect.
const QString slider_style =
    "QSlider::groove:horizontal{border: 1px solid #4A708B;background: #C0C0C0;height: "
    "5px;border-radius: 1px;padding-left:-1px;padding-right:-1px;}" SLIDER_GAP
    "QSlider::sub-page:horizontal{background: qlineargradient(x1:0, y1:0, x2:0, y2:1,stop:0 "
    "#B1B1B1, stop:1 #c4c4c4);background: qlineargradient(x1: 0, y1: 0.2, x2: 1, y2: 1,stop: 0 "
    "#5DCCFF, stop: 1 #1874CD);border: 1px solid #4A708B;height: 10px;border-radius: "
    "2px;}" SLIDER_GAP
    "QSlider::add-page:horizontal{background: #575757;border: 0px solid #777;height: "
    "10px;border-radius: 2px;}" SLIDER_GAP
    "QSlider::handle:horizontal{background: qradialgradient(spread:pad, cx:0.5, cy:0.5, "
    "radius:0.5, fx:0.5, fy:0.5,stop:0.6 #45ADED, stop:0.778409 rgba(255, 255, 255, 255));width: "
    "11px;margin-top: -3px;margin-bottom: -3px;border-radius: 5px;}"
    "QSlider::handle:horizontal:hover{background: qradialgradient(spread:pad, cx:0.5, cy:0.5, "
    "radius:0.5, fx:0.5, fy:0.5, stop:0.6 #2A8BDA,stop:0.778409 rgba(255, 255, 255, 255));width: "
    "11px;margin-top: -3px;margin-bottom: -3px;border-radius: 5px;}"
    "QSlider::sub-page:horizontal:disabled{background: #00009C;border-color: #999;}"
    "QSlider::add-page:horizontal:disabled{background: #eee;border-color: #999;}"
    "QSlider::handle:horizontal:disabled{background: #eee;border: 1px solid #aaa;border-radius: "
    "4px;}";

// Without this, the window's dark grey also covers the parts of scroll bars.
const QString dark_scroll_style =
    "QScrollBar{background: rgb(68, 69, 73); border: none;}"
    "QScrollBar:vertical{width: 14px;}QScrollBar:horizontal{height: 14px;}"
    "QScrollBar::handle{background: rgb(150, 150, 150); border-radius: 4px; margin: 3px;}"
    "QScrollBar::handle:vertical{min-height: 30px;}QScrollBar::handle:horizontal{min-width: 30px;}"
    "QScrollBar::handle:hover,QScrollBar::handle:pressed{background: rgb(191, 191, 191);}"
    "QScrollBar::add-line,QScrollBar::sub-line{width: 0px; height: 0px;}"
    "QScrollBar::add-page,QScrollBar::sub-page{background: none;}";

namespace {

QPalette OwnPalette()
{
    const QColor blue(23, 103, 184); // the window's blue, dark enough for white text
    const QColor disabled(90, 90, 90);
    QPalette palette(Qt::black, QColor(239, 239, 239), Qt::white, QColor(159, 159, 159),
                     QColor(184, 184, 184), Qt::black, Qt::white, Qt::white, QColor(239, 239, 239));
    palette.setColor(QPalette::Midlight, QColor(202, 202, 202));
    palette.setColor(QPalette::Shadow, QColor(118, 118, 118));
    palette.setColor(QPalette::AlternateBase, QColor(247, 247, 247));
    palette.setColor(QPalette::Highlight, blue);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, blue);
    palette.setColor(QPalette::LinkVisited, blue);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::ToolTipText, Qt::black);
    palette.setColor(QPalette::PlaceholderText, disabled);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, disabled);
    }
    return palette;
}

} // namespace

// Set on the application, not the window: below a style sheet widgets do not inherit palettes.
void UseOwnColours()
{
    QApplication::setPalette(OwnPalette());
}

QFont CalibriFont(int points, QFont::Weight weight)
{
    return {"Calibri", points, weight};
}
