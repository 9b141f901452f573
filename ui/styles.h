#pragma once

#include <QFont>
#include <QString>

// The style sheets, colours and font shared by pages and dialogs.

extern const QString window_style;        // the window's dark grey, also for strips and footers
extern const QString panel_style;         // the light grey of panels and separators
extern const QString field_style;         // the frame of a directory field
extern const QString home_entry_style;    // the home page's three entries
extern const QString main_button_style;   // all other buttons with text
extern const QString action_button_style; // blue; currently unused
extern const QString slider_style;        // the cut page's slider
extern const QString dark_scroll_style;   // scroll bars on the window's dark grey
extern const QString backGroud_style;     // the title strip of a dialog

/// Sets the application's palette. Window and dialogs look the same on every desktop: white text of
/// a dark theme would be unreadable on their grey.
void UseOwnColours();

/// Calibri (or its substitute Carlito) in `points`, normal or bold.
QFont CalibriFont(int points, QFont::Weight weight = QFont::Normal);
