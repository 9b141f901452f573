#pragma once

#include <QFont>
#include <QString>

// The style sheets, the colours and the font that the pages and dialogs share.

extern const QString window_style;        // the window's dark grey, also of strips and footers
extern const QString panel_style;         // the light grey of panels and separators
extern const QString field_style;         // the frame of a directory field
extern const QString home_entry_style;    // the home page's three entries
extern const QString main_button_style;   // every other button with a text
extern const QString action_button_style; // blue; no button carries it today
extern const QString slider_style;        // the cut page's position
extern const QString backGroud_style;     // the title strip of a dialog

/// Gives the application colours of its own. Window and dialogs are the same on every desktop: a
/// dark one's white text could not be read on their grey.
void UseOwnColours();

/// Calibri (Carlito where that stands in for it) of `points`, normal or bold.
QFont CalibriFont(int points, QFont::Weight weight = QFont::Normal);
