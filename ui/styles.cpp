#include "ui/styles.h"

// The grey button's text stands in two forms that differ in white space only, the home page's and
// everybody else's; both are kept to the letter.
#define HOME_GAP "\t\t\t\t\t\t\t  "
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

QFont CalibriFont(int points, QFont::Weight weight)
{
    return QFont("Calibri", points, weight);
}
